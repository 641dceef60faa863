#pragma once

#include "terminal/Session.h"

#include <functional>

namespace CLI {
class App;
}

namespace loftmere {

// What the command line asks for.
struct Request {
    bool json = false;
    std::function<ExitStatus(Session&)> run; // set by the verb that was named
};

// Each tells the parser of one verb: its operands, its options and its help.
void declareScan(CLI::App& program, Request& request);
void declareClean(CLI::App& program, Request& request);
void declareUndo(CLI::App& program, Request& request);
void declareSessions(CLI::App& program, Request& request);
void declarePurge(CLI::App& program, Request& request);
void declareHistory(CLI::App& program, Request& request);
void declareCheck(CLI::App& program, Request& request);

// The options that all verbs share.
CLI::App& addVerb(CLI::App& program, Request& request, const char* name, const char* description);

} // namespace loftmere
