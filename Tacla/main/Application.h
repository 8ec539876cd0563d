#pragma once

namespace tacla {

// The three things that the desktop module does. Each returns the exit status.
int runApplication(int& argc, char** argv);
int runNotifyTest(int& argc, char** argv);
int runSnapshot(int& argc, char** argv); // --snapshot <path> [--dark]

}
