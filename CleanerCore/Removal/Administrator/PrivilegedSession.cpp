#include "CleanerCore/Removal/Administrator/PrivilegedSession.h"

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/AdminCommands.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/NamedPipe.h"
#include "CleanerCore/Platform/RandomBytes.h"
#include "CleanerCore/Platform/User.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/Administrator/HelperScript.h"
#include "CleanerCore/Removal/Administrator/PrivilegedRequest.h"
#include "CleanerCore/Support/Quoting.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>

namespace loftmere {

namespace {

constexpr double promptLimit = 120;
constexpr int startTries = 40;
constexpr std::chrono::milliseconds betweenTries{100};
constexpr const char* promptText = "Ostrel Loftmere needs permission once for this session.";

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
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
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
    // A helper that is silent is given up: whatever it still says must not be taken for the answer to
    // something else.
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
    if (!prepareFolder()) return false;
    const std::string command = fmt::format("/usr/bin/nohup /bin/bash {} {} {} {} >/dev/null 2>&1 &",
                                            shellQuoted(settings_.folder + "/helper.sh"),
                                            shellQuoted(settings_.folder), token_, ::getpid());
    return settings_.prompt(command, promptText, promptLimit).ok() && awaitHelper();
}

bool PrivilegedSession::prepareFolder() {
    const std::string& folder = settings_.folder;
    removeFolder(folder); // what a session that was cancelled or crashed has left
    token_ = newToken();
    owed_ = 0;
    return createDirectories(folder, 0700) && makeNamedPipe(folder + "/cmd", 0600) &&
           makeNamedPipe(folder + "/out", 0600) &&
           replaceFile(folder + "/helper.sh", helperScript(settings_.helperSettings), 0700);
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
    return send(requestWords(operation), settings_.limit.value_or(requestLimit(operation)));
}

Shell::Result PrivilegedSession::fallback(const Operation& operation) const {
    const auto command = oneShotCommand(operation);
    // There is no command of its own for a removal, which may hold more than a command line takes.
    if (!command) return {.status = 1, .out = "", .err = "The administrator helper could not be started"};
    return AdminRunner::oneShot(command->line, command->purpose, settings_.prompt);
}

} // namespace loftmere
