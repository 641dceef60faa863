#pragma once

namespace loftmere {

// Does what the command line asks for and answers the program's exit status.
int runCommandLine(int argc, char** argv);

} // namespace loftmere
