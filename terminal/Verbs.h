#pragma once

#include "terminal/Program.h"

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace loftmere {

// What the command line asks for.
struct Request {
    bool json = false;
    std::function<ExitStatus(Program&)> run; // set by the verb that was named
};

// Does what the command line asks for and answers the exit status.
int runCommandLine(int argc, char** argv);

// Each declares one verb to the parser: its operands, its options and its help.
void declareScan(CLI::App& parser, Request& request);
void declareClean(CLI::App& parser, Request& request);
void declareUndo(CLI::App& parser, Request& request);
void declareSessions(CLI::App& parser, Request& request);
void declarePurge(CLI::App& parser, Request& request);
void declareHistory(CLI::App& parser, Request& request);
void declareCheck(CLI::App& parser, Request& request);

// A verb with the options that all verbs share.
CLI::App& addVerb(CLI::App& parser, Request& request, const char* name, const char* description);

// Declares operands, or the values of an option, that are taken as they are given. The parser would read
// "[a]" and "{}" as lists.
CLI::Option* addWords(CLI::App& verb, const char* name, std::vector<std::string>& words,
                      const char* description);

} // namespace loftmere
