#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/ChildProcess.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/NamedPipe.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Support/Crypto.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <chrono>
#include <thread>

namespace loftmere {

namespace {

using Session = PrivilegedSession;

constexpr double promptLimit = 120;
constexpr int startTries = 40;
constexpr std::chrono::milliseconds betweenTries{100};
constexpr const char* promptText = "Ostrel Loftmere needs permission once for this session.";

constexpr std::string_view scriptText =
#include "CleanerCore/Removal/Administrator/helper.sh.inc"
    ;

struct ScriptRow {
    std::string_view word;    // on the wire
    std::string_view command; // in the table of the system's commands
};

// In the order of the enumeration.
constexpr ScriptRow scripts[] = {
    {"periodic-daily", "periodic_daily"},
    {"periodic-weekly", "periodic_weekly"},
    {"periodic-monthly", "periodic_monthly"},
    {"rebuild-spotlight", "rebuild_spotlight"},
    {"flush-dns", "flush_dns"},
};

// What an operation is on the wire, and without a session.
struct Request {
    std::string words;        // without the token: "RM {base64} {base64}"
    double limit;             // seconds that the reply may take
    std::string line;         // a shell command that does the same by itself; empty when there is none
    std::string purpose = ""; // of that command, for the user
};

Request requestFor(const Session::Kill& kill) {
    return {.words = fmt::format("KILL {} {}", kill.signal, kill.pid),
            .limit = 20,
            .line = fmt::format("{} -{} {}", adminCommand("kill_process"), kill.signal, kill.pid),
            .purpose = "quit an app"};
}

Request requestFor(const Session::Bootout& bootout) {
    return {.words = "BOOTOUT " + base64Encoded(bootout.plist),
            .limit = 20,
            .line = fmt::format("{} {}", adminCommand("bootout"), shellQuoted(bootout.plist)),
            .purpose = "stop a background item"};
}

// A removal has no command of its own: it may hold more than a command line takes.
Request requestFor(const Session::Remove& remove) {
    Request request{.words = "RM", .limit = 300, .line = ""};
    for (const std::string& path : remove.paths) request.words += " " + base64Encoded(path);
    return request;
}

Request requestFor(const Session::Maintenance& maintenance) {
    const ScriptRow& row = scripts[static_cast<size_t>(maintenance.script)];
    return {.words = fmt::format("SCRIPT {}", row.word),
            .limit = 600,
            .line = std::string(adminCommand(row.command)),
            .purpose = "run maintenance"};
}

Request requestFor(const Session::Purge&) {
    return {.words = "PURGE",
            .limit = 120,
            .line = std::string(adminCommand("purge")),
            .purpose = "free inactive memory"};
}

std::string newToken() {
    std::string token;
    for (const char byte : randomBytes(32)) token += "0123456789abcdef"[byte & 0xF];
    return token;
}

std::string trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return "";
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

Shell::Result resultOf(const std::string& reply) {
    if (reply.starts_with("OK")) return {.status = 0, .out = trimmed(reply.substr(2)), .err = ""};
    return {.status = 1, .out = "", .err = reply};
}

void removeFolder(const std::string& folder) {
    if (const auto place = Place::open(folder)) (void)removeItem(*place);
}

// Makes room for a new session. What a cancelled or crashed one has left is removed. While a helper answers
// or leaves, the folder is root's: after a crash at that moment it stays so, and can only be moved out of the
// way.
void clearFolder(const std::string& folder) {
    constexpr int tries = 10;
    for (int i = 0; i < tries; ++i) {
        removeFolder(folder);
        if (!FS::exists(folder)) return;
        std::this_thread::sleep_for(betweenTries);
    }
    const auto place = Place::open(folder);
    if (place) (void)moveItem(*place, place->beside(place->name() + "-left-" + newUUID()));
}

} // namespace

PrivilegedSession& PrivilegedSession::shared() {
    static PrivilegedSession session({.folder = Paths(homeDirectory()).supportDir() + "/priv"});
    return session;
}

PrivilegedSession::PrivilegedSession(Settings settings) : settings_(std::move(settings)) {}

Shell::Result PrivilegedSession::run(const Operation& operation) {
    const std::lock_guard guard(lock_);
    if (started_) {
        if (const auto reply = request(operation)) return resultOf(*reply);
    }
    // A silent helper is given up: whatever it still says must not pass for the answer to something else.
    started_ = start();
    if (started_) {
        if (const auto reply = request(operation)) return resultOf(*reply);
    }
    started_ = false;
    return fallback(operation);
}

bool PrivilegedSession::isActive() {
    const std::lock_guard guard(lock_);
    return started_ && send("PING", settings_.limit.value_or(2.0)).has_value();
}

void PrivilegedSession::end() {
    const std::lock_guard guard(lock_);
    if (!started_) return;
    send("QUIT", 3.0);
    removeFolder(settings_.folder);
    started_ = false;
}

bool PrivilegedSession::start() {
    const std::string script = helperScript(settings_.helperSettings);
    if (!prepareFolder(script)) return false;
    // Root runs this very text: the file could be exchanged while the user types the password. Its path is
    // only the name under which the helper runs.
    const std::string command = fmt::format("/usr/bin/nohup /bin/bash -c {} {} {} {} {} >/dev/null 2>&1 &",
                                            shellQuoted(script), shellQuoted(settings_.folder + "/helper.sh"),
                                            shellQuoted(settings_.folder), token_, currentProcessID());
    return settings_.prompt(command, promptText, promptLimit).ok() && awaitHelper();
}

bool PrivilegedSession::prepareFolder(const std::string& script) {
    const std::string& folder = settings_.folder;
    clearFolder(folder);
    token_ = newToken();
    owed_ = 0;
    return createDirectories(folder, 0700) && makeNamedPipe(folder + "/cmd", 0600) &&
           makeNamedPipe(folder + "/out", 0600) && replaceFile(folder + "/helper.sh", script, 0700);
}

bool PrivilegedSession::awaitHelper() {
    for (int i = 0; i < startTries; ++i) {
        if (send("PING", 1.0)) return true;
        std::this_thread::sleep_for(betweenTries);
    }
    return false;
}

// Only liveness questions are ever left without their answer in a session that goes on, and those have
// answers of one line. So counting lines is enough to know which reply is ours.
std::optional<std::string> PrivilegedSession::send(const std::string& words, double timeout) {
    const PipeAnswer answer = askThroughPipes({.requests = settings_.folder + "/cmd",
                                               .replies = settings_.folder + "/out",
                                               .line = token_ + " " + words,
                                               .stale = owed_,
                                               .timeout = timeout});
    owed_ = owed_ + (answer.asked ? 1 : 0) - answer.linesRead;
    std::string reply = trimmed(repairedUTF8(answer.reply.value_or("")));
    if (reply.empty()) return std::nullopt;
    return reply;
}

std::optional<std::string> PrivilegedSession::request(const Operation& operation) {
    const Request request = std::visit([](const auto& each) { return requestFor(each); }, operation);
    return send(request.words, settings_.limit.value_or(request.limit));
}

Shell::Result PrivilegedSession::fallback(const Operation& operation) const {
    const Request request = std::visit([](const auto& each) { return requestFor(each); }, operation);
    if (request.line.empty())
        return {.status = 1, .out = "", .err = "The administrator helper could not be started"};
    return AdminRunner::oneShot(request.line, request.purpose, settings_.prompt);
}

std::string PrivilegedSession::helperScript(std::string_view settings) {
    constexpr std::string_view placeholder = "#@settings@";
    std::string lines;
    for (const AdminCommand& command : adminCommands()) {
        // Without the request pipe: a command that outlives the helper must not look like a helper that
        // listens.
        lines += fmt::format("{}() {{ {} \"$@\"; }} 3<&-\n", command.name, command.text);
    }
    lines += settings;
    std::string script(scriptText);
    script.replace(script.find(placeholder), placeholder.size(), lines);
    return script;
}

} // namespace loftmere
