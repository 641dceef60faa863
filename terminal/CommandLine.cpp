#include "terminal/CommandLine.h"

#include "CleanerCore/Support/Text.h"
#include "terminal/StatusLine.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>

#include <csignal>

namespace loftmere {

namespace {

constexpr const char* version = "loftmere " LOFTMERE_VERSION;
constexpr const char* purpose =
    "Ostrel Loftmere: a disk cleaner that explains itself and can undo what it did";
constexpr const char* hint = "Start with \"loftmere scan\": it looks and touches nothing.\n"
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

int answer(Console& console, std::string_view text) {
    console.print(text);
    return console.flush() ? 0 : static_cast<int>(ExitStatus::failed);
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
// inherit that.
void outliveReaders() {
    struct sigaction action{};
    action.sa_handler = [](int) {};
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGPIPE, &action, nullptr);
}

} // namespace

CLI::App& addVerb(CLI::App& program, Request& request, const char* name, const char* description) {
    CLI::App& verb = *program.add_subcommand(name, description);
    verb.group("Verbs");
    verb.add_flag("--json", request.json, jsonHelp);
    return verb;
}

int runCommandLine(int argc, char** argv) {
    outliveReaders();
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
    Session session(console, request.json);
    const ExitStatus status = request.run(session);
    if (console.flush()) return static_cast<int>(status);
    console.say("the output could not be written");
    return static_cast<int>(ExitStatus::failed);
}

} // namespace loftmere
