#include "Child.h"
#include "Measurement.h"
#include "TemporaryDirectory.h"

#include <sstream>

// What engines weigh, and whether they grow, against machines of the JavaScript engine alone.

namespace {

struct Weight {
    double resident = 0;
    double own = 0;
};

/// The weights told under the label, in MiB.
std::vector<Weight> weights(const std::string& output, const std::string& wanted) {
    std::vector<Weight> found;
    std::istringstream words(output);
    std::string label;
    for (double resident = 0, own = 0; words >> label >> resident >> own;) {
        if (label == wanted) {
            found.push_back({resident / 1024, own / 1024});
        }
    }
    return found;
}

std::string weigh(Program program, const Workload& workload, std::size_t count, long runs) {
    const TemporaryDirectory directory;
    writeHostFiles(workload, directory.path());
    std::vector<std::string> arguments = {"weigh", directory.path(), std::to_string(count), std::to_string(runs)};
    if (program == Program::Engine) {
        for (const std::size_t size : {workload.inputCount, workload.recordCount, workload.ruleCount}) {
            arguments.push_back(std::to_string(size));
        }
    }
    return outputOf(program, arguments);
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

void writeRow(std::ostream& output, const std::string& name, const Weight& floor, const Weight& subject) {
    output << "| " << name << " | " << number(floor.resident) << " | " << number(subject.resident) << " | **"
           << number(subject.resident / floor.resident) << "** | " << number(floor.own) << " | " << number(subject.own)
           << " | **" << number(subject.own / floor.own) << "** |\n"
           << std::flush;
}

void writeHead(std::ostream& output, const char* title) {
    output << "\n### " << title
           << "\n\n| MiB | Bare, resident | Quorvel, resident | Ratio | Bare, private | Quorvel, private | Ratio |\n"
              "|---|--:|--:|--:|--:|--:|--:|\n";
}

Weight perMachine(const std::string& output, std::size_t count) {
    const Weight before = weights(output, "nothing").at(0);
    const Weight after = weights(output, "ready").at(0);
    const auto machines = static_cast<double>(count);
    return {(after.resident - before.resident) / machines, (after.own - before.own) / machines};
}

} // namespace

void writeMemoryTables(std::ostream& output, bool isFull) {
    const Workload workload{60, 500, 150};
    writeHead(output, "Memory of each engine, against bare machines");
    for (const std::size_t count : {1U, 10U, 100U}) {
        writeRow(output, "each of " + std::to_string(count),
                 perMachine(weigh(Program::Bare, workload, count, 0), count),
                 perMachine(weigh(Program::Engine, workload, count, 0), count));
    }
    const long runs = isFull ? 100000 : 10000;
    const std::vector<Weight> bare = weights(weigh(Program::Bare, workload, 1, runs), "evaluated");
    const std::vector<Weight> engine = weights(weigh(Program::Engine, workload, 1, runs), "evaluated");
    writeHead(output, "Memory of the whole process while it evaluates");
    for (const std::size_t reading : {0U, 1U, 4U, 9U}) {
        writeRow(output, "after " + std::to_string((static_cast<long>(reading) + 1) * runs / 10) + " evaluations",
                 bare.at(reading), engine.at(reading));
    }
}
