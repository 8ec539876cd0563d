#pragma once

#include "DravelKit/GoogleAuth/GoogleConfig.h"

#include <string>

// The page that the browser shows when it comes back from Google: one HTML document without external resources.
namespace dravel::CallbackPage {

std::string success(const GoogleConfig&);

// error is the code that came with the callback: anybody's text, shown escaped.
std::string failure(const std::string& error, const GoogleConfig&);

}
