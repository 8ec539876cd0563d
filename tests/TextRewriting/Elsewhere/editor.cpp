#include "DravelKit/TextRewriting/TextRewriter.h"

#include "Readme.cpp"
