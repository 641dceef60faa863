#include "terminal/CommandLine.h"

#include "CleanerCore/Platform/DescriptorLimit.h"
#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Platform/User.h"
#include "CleanerCore/Support/Text.h"
#include "terminal/StatusLine.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>

namespace loftmere {

namespace {

constexpr const char* version = "loftmere " LOFTMERE_VERSION;
constexpr const char* purpose =
    "Ostrel Loftmere: a disk cleaner that explains itself and can undo what it did";
constexpr const char* hint = "Start with \"loftmere scan\": it looks and removes nothing.\n"
                             "\"loftmere VERB --help\" tells more about a verb.";

constexpr const char* jsonHelp = "Print JSON instead of text";

// The words of the help, where the parser's own are not those of this program.
constexpr std::pair<const char*, const char*> labels[]{
    {"SUBCOMMAND", "VERB"},
    {"Positionals", "Operands"},
    {"TEXT", ""},
    {"OPTIONS", "OPTION..."},
};

void declareAll(CLI::App& program, Request& request) {
    program.name("loftmere");
    program.set_version_flag("--version", version, "Print the version");
    program.set_help_flag("-h,--help", "Print this help");
    program.add_flag("--json", request.json, jsonHelp);
    program.require_subcommand(0, 1);
    program.footer(hint);
    const auto formatter = program.get_formatter();
    formatter->column_width(26);
    for (const auto& [theirs, ours] : labels) formatter->label(theirs, ours);
    for (const auto declare : {declareScan, declareClean, declareUndo, declareSessions, declarePurge,
                               declareHistory, declareCheck})
        declare(program, request);
}

// What is left to do at the end: to see that all that was printed has gone out.
int finish(Console& console, ExitStatus status) {
    if (console.flush()) return static_cast<int>(status);
    console.say("the output could not be written");
    return static_cast<int>(ExitStatus::failed);
}

int answer(Console& console, std::string_view text) {
    console.print(text);
    return finish(console, ExitStatus::done);
}

// Parses and says what is wrong. The exit status when there is nothing more to do.
std::optional<int> parse(CLI::App& program, Console& console, int argc, char** argv) {
    try {
        program.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::CallForVersion&) {
        return answer(console, std::string(version) + "\n");
    } catch (const CLI::CallForHelp&) {
        return answer(console, program.help());
    } catch (const CLI::ParseError& error) {
        console.say(printable(error.what()));
        console.say("\"loftmere --help\" tells what there is");
        return static_cast<int>(ExitStatus::usage);
    }
}

// A reader that goes away must not end a clean in its middle. A handler, and not "ignore", because children
// inherit that. The ends of children are waited for, also where whoever started this program did not care to.
void setSignals() {
    struct sigaction action{};
    action.sa_handler = [](int) {};
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGPIPE, &action, nullptr);
    action = {};
    action.sa_handler = SIG_DFL;
    ::sigaction(SIGCHLD, &action, nullptr);
}

// A standard stream that is closed would else become the first file that is opened, and be written to.
void fillStandardStreams() {
    for (int fd = ::open("/dev/null", O_RDONLY); fd >= 0; fd = ::open("/dev/null", O_RDONLY)) {
        if (fd <= STDERR_FILENO) continue;
        ::close(fd);
        return;
    }
}

} // namespace

CLI::App& addVerb(CLI::App& program, Request& request, const char* name, const char* description) {
    CLI::App& verb = *program.add_subcommand(name, description);
    verb.group("Verbs");
    verb.add_flag("--json", request.json, jsonHelp);
    return verb;
}

int runCommandLine(int argc, char** argv) {
    fillStandardStreams();
    setSignals();
    raiseDescriptorLimit();
    endOnInterrupt();
    Console console;
    Request request;
    CLI::App program(purpose);
    declareAll(program, request);
    if (const auto ended = parse(program, console, argc, argv)) return *ended;
    if (!request.run) {
        console.say("say what to do\n\n" + program.help());
        return static_cast<int>(ExitStatus::usage);
    }
    // Where there is none, everything would look clean, and the support folders would be made of thin air.
    if (const std::string home = homeDirectory(); !readDirectory(home)) {
        console.say(fmt::format("the home folder {} cannot be read", printable(home)));
        return static_cast<int>(ExitStatus::failed);
    }
    Session session(console, request.json);
    return finish(console, request.run(session));
}

} // namespace loftmere
