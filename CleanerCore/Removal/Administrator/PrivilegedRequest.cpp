#include "CleanerCore/Removal/Administrator/PrivilegedRequest.h"

#include "CleanerCore/Platform/AdminCommands.h"
#include "CleanerCore/Support/Base64.h"
#include "CleanerCore/Support/Quoting.h"

#include <fmt/format.h>

#include <string_view>

namespace loftmere {

namespace {

using Session = PrivilegedSession;

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

const ScriptRow& row(Session::Script script) {
    return scripts[static_cast<size_t>(script)];
}

struct Words {
    std::string operator()(const Session::Kill& kill) const {
        return fmt::format("KILL {} {}", kill.signal, kill.pid);
    }
    std::string operator()(const Session::Bootout& bootout) const {
        return "BOOTOUT " + base64Encoded(bootout.plist);
    }
    std::string operator()(const Session::Remove& remove) const {
        std::string words = "RM";
        for (const std::string& path : remove.paths) words += " " + base64Encoded(path);
        return words;
    }
    std::string operator()(const Session::Maintenance& maintenance) const {
        return fmt::format("SCRIPT {}", row(maintenance.script).word);
    }
    std::string operator()(const Session::Purge&) const { return "PURGE"; }
};

struct Limit {
    double operator()(const Session::Kill&) const { return 20; }
    double operator()(const Session::Bootout&) const { return 20; }
    double operator()(const Session::Remove&) const { return 300; }
    double operator()(const Session::Maintenance&) const { return 600; }
    double operator()(const Session::Purge&) const { return 120; }
};

struct OneShot {
    using Answer = std::optional<OneShotCommand>;

    Answer operator()(const Session::Kill& kill) const {
        return {
            {fmt::format("{} -{} {}", adminCommand("kill_process"), kill.signal, kill.pid), "quit an app"}};
    }
    Answer operator()(const Session::Bootout& bootout) const {
        return {{fmt::format("{} {}", adminCommand("bootout"), shellQuoted(bootout.plist)),
                 "stop a background item"}};
    }
    Answer operator()(const Session::Remove&) const { return std::nullopt; }
    Answer operator()(const Session::Maintenance& maintenance) const {
        return {{std::string(adminCommand(row(maintenance.script).command)), "run maintenance"}};
    }
    Answer operator()(const Session::Purge&) const {
        return {{std::string(adminCommand("purge")), "free inactive memory"}};
    }
};

} // namespace

std::string requestWords(const Session::Operation& operation) {
    return std::visit(Words(), operation);
}

double requestLimit(const Session::Operation& operation) {
    return std::visit(Limit(), operation);
}

std::optional<OneShotCommand> oneShotCommand(const Session::Operation& operation) {
    return std::visit(OneShot(), operation);
}

} // namespace loftmere
