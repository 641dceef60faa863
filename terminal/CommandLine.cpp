#include "CleanerCore/Platform/Terminal.h"
#include "terminal/Verbs.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace loftmere {

namespace {

constexpr const char* version = "loftmere " LOFTMERE_VERSION;
constexpr const char* purpose =
    "Ostrel Loftmere: a disk cleaner that explains itself and can undo what it did";
constexpr const char* hint = "Start with \"loftmere scan\": it looks and removes nothing.\n"
                             "\"loftmere VERB --help\" says more about a verb.";

constexpr const char* jsonHelp = "Print JSON instead of text";

// Goes before each word that is to be taken as it is, so that the parser finds no list, no end of a verb and
// no empty value in it.
constexpr char asIs = '\x1F';

// The words of the help, where the parser's own words would be other ones.
constexpr std::pair<const char*, const char*> labels[]{
    {"SUBCOMMAND", "VERB"},   {"Positionals", "Operands"}, {"TEXT", ""},
    {"OPTIONS", "OPTION..."}, {"Excludes", "not with"},
};

// The words of the command line as the parser takes them, the last first.
std::vector<std::string> wordsOf(int argc, char** argv) {
    std::vector<std::string> words;
    bool knowsVerb = false;
    bool operandsOnly = false;
    for (std::string word : std::vector<std::string>(argv + 1, argv + std::max(argc, 1))) {
        const bool isOption = !operandsOnly && word.size() > 1 && word.starts_with('-');
        if (isOption) {
            operandsOnly = word == "--";
            const size_t equals = word.find('=');
            if (equals != std::string::npos) word.insert(equals + 1, 1, asIs);
        } else if (knowsVerb || operandsOnly) {
            word.insert(0, 1, asIs);
        } else {
            knowsVerb = true;
        }
        words.push_back(word);
    }
    std::ranges::reverse(words);
    return words;
}

void declareAll(CLI::App& parser, Request& request) {
    parser.name("loftmere");
    parser.set_version_flag("--version", version, "Print the version");
    parser.set_help_flag("-h,--help", "Print this help");
    parser.add_flag("--json", request.json, jsonHelp);
    parser.require_subcommand(0, 1);
    parser.footer(hint);
    const auto formatter = parser.get_formatter();
    formatter->column_width(26);
    for (const auto& [theirs, ours] : labels) formatter->label(theirs, ours);
    for (const auto declare : {declareScan, declareClean, declareUndo, declareSessions, declarePurge,
                               declareHistory, declareCheck})
        declare(parser, request);
}

// What is left to do at the end: to see that all that was printed has gone out.
int finish(Console& console, ExitStatus status) {
    if (console.flush() || notedStop()) return static_cast<int>(status);
    console.say("the output could not be written");
    return static_cast<int>(ExitStatus::failed);
}

int answer(Console& console, std::string_view text) {
    console.print(text);
    return finish(console, ExitStatus::done);
}

// Parses and says what is wrong. The exit status when there is nothing more to do.
std::optional<int> parse(CLI::App& parser, Console& console, int argc, char** argv) {
    try {
        parser.parse(wordsOf(argc, argv));
        return std::nullopt;
    } catch (const CLI::CallForVersion&) {
        return answer(console, std::string(version) + "\n");
    } catch (const CLI::CallForHelp&) {
        return answer(console, parser.help());
    } catch (const CLI::ParseError& error) {
        std::string message = error.what();
        std::erase(message, asIs);
        console.say(printable(message));
        console.say("\"loftmere --help\" lists what there is");
        return static_cast<int>(ExitStatus::usage);
    }
}

} // namespace

CLI::App& addVerb(CLI::App& parser, Request& request, const char* name, const char* description) {
    CLI::App& verb = *parser.add_subcommand(name, description);
    verb.group("Verbs");
    verb.add_flag("--json", request.json, jsonHelp);
    return verb;
}

CLI::Option* addWords(CLI::App& verb, const char* name, std::vector<std::string>& words,
                      const char* description) {
    const auto take = [&words](const std::vector<std::string>& given) {
        for (std::string word : given) {
            const size_t mark = word.find(asIs);
            if (mark != std::string::npos) word.erase(mark, 1);
            words.push_back(word);
        }
    };
    CLI::Option* option = verb.add_option_function<std::vector<std::string>>(name, take, description);
    if (option->nonpositional()) option->allow_extra_args(false);
    return option;
}

int runCommandLine(int argc, char** argv) {
    prepareStandardStreams();
    endOnStopSignals();
    Console console;
    Request request;
    CLI::App parser(purpose);
    declareAll(parser, request);
    if (const auto ended = parse(parser, console, argc, argv)) return *ended;
    if (!request.run) {
        console.say("say what to do\n\n" + parser.help());
        return static_cast<int>(ExitStatus::usage);
    }
    const auto home = AppModel::currentHome();
    if (!home) {
        console.say(printable(home.error().message));
        return static_cast<int>(ExitStatus::failed);
    }
    Program program(console, request.json, *home);
    return finish(console, request.run(program));
}

} // namespace loftmere
