// Times commands in turn, round after round, so that a disturbance of the machine meets them all:
//
//     Rounds ROUNDS BEFORE NAME COMMAND [NAME COMMAND]...
//
// BEFORE is run, untimed, before each command ("" for nothing). Commands are run by the shell with their
// output thrown away. Prints a Markdown table: the median and the least time, the median of the ratios to the
// first command of the same round, and the most memory that was ever resident. Ends with 1 when a command
// fails.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Contender {
    std::string name;
    std::string command;
    std::vector<double> seconds = {};
    long peakKilobytes = 0;
};

bool run(const std::string& command, rusage& usage) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(::open("/dev/null", O_RDWR), STDOUT_FILENO);
        ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        ::_exit(127);
    }
    int status = 0;
    return ::wait4(child, &status, 0, &usage) == child && status == 0;
}

bool takeTurn(const std::string& before, Contender& contender) {
    rusage usage{};
    if (!before.empty() && !run(before, usage)) return false;
    const auto start = std::chrono::steady_clock::now();
    if (!run(contender.command, usage)) return false;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    contender.seconds.push_back(taken.count());
    contender.peakKilobytes = std::max(contender.peakKilobytes, usage.ru_maxrss);
    return true;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void printTable(const std::vector<Contender>& contenders) {
    fmt::print("| command | median s | least s | ratio to the first | peak MiB |\n|---|---|---|---|---|\n");
    for (const Contender& one : contenders) {
        std::vector<double> ratios;
        for (size_t i = 0; i < one.seconds.size(); ++i)
            ratios.push_back(one.seconds[i] / contenders.front().seconds[i]);
        fmt::print("| {} | {:.3f} | {:.3f} | {:.2f} | {:.1f} |\n", one.name, median(one.seconds),
                   *std::ranges::min_element(one.seconds), median(ratios),
                   static_cast<double>(one.peakKilobytes) / 1024);
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count < 5 || count % 2 == 0) return 2;
    const int rounds = std::max(1, std::atoi(arguments[1]));
    const std::string before = arguments[2];
    std::vector<Contender> contenders;
    for (int i = 3; i + 1 < count; i += 2) contenders.push_back({arguments[i], arguments[i + 1]});
    for (int round = 0; round < rounds; ++round) {
        for (Contender& contender : contenders) {
            if (takeTurn(before, contender)) continue;
            fmt::print(stderr, "failed: {}\n", contender.command);
            return 1;
        }
    }
    printTable(contenders);
}
