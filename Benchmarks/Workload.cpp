#include "Workload.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

namespace {

constexpr std::uint32_t kSeed = 20261122;
constexpr std::array<const char*, 6> kWords = {"free", "personal", "team", "en_GB", "dark", "drawing"};

// The standard distributions differ between libraries; a remainder does not.
class Random {
public:
    std::size_t below(std::size_t limit) { return m_engine() % limit; }
    const char* word() { return kWords[below(kWords.size())]; }

private:
    std::mt19937 m_engine{kSeed}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same workload every time
};

std::string inputName(std::size_t index) {
    return "input" + std::to_string(index);
}

std::string eventName(std::size_t index) {
    return "feature" + std::to_string(index % 97) + ".used" + std::to_string(index);
}

std::string twoDigits(std::size_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

std::string dateText(Random& random) {
    return "2026-" + twoDigits(1 + random.below(9)) + "-" + twoDigits(1 + random.below(28)) + "T" +
           twoDigits(random.below(24)) + ":" + twoDigits(random.below(60)) + ":" + twoDigits(random.below(60)) + "Z";
}

QVLJSONValue inputValue(Random& random, std::size_t index) {
    switch (index % 4) {
    case 0:
        return static_cast<std::int64_t>(random.below(1000));
    case 1:
        return std::string(random.word());
    case 2:
        return random.below(2) == 0;
    default:
        return dateText(random);
    }
}

std::string ruleText(Random& random, const Workload& workload, std::size_t index) {
    const auto input = [&](std::size_t kind) {
        return "inputs." + inputName(random.below(std::max<std::size_t>(workload.inputCount / 4, 1)) * 4 + kind);
    };
    const std::string event = eventName(random.below(std::max<std::size_t>(workload.recordCount, 1)));
    return "rules.push(function rule" + std::to_string(index) +
           "(inputs, events, now) {\n"
           "    if (" +
           input(0) + " < " + std::to_string(random.below(900)) +
           ") { return no('too few'); }\n"
           "    if (" +
           input(1) + " === '" + random.word() +
           "') { return no('plan'); }\n"
           "    if (daysSince(events['" +
           event + "'], now) < " + std::to_string(random.below(90)) +
           ") { return no('shown lately'); }\n"
           "    return yes({ title: 'offer." +
           std::to_string(index) + "', isUrgent: " + input(2) + " === true, limit: " + input(0) +
           " });\n"
           "});\n";
}

constexpr const char* kPreamble = R"(// Quorvel 1.0.0.js
const rules = [];
const no = reason => ({ reason: reason });
const yes = value => ({ value: value });
function daysSince(event, now) {
    return event && event.lastTime ? (now - Date.parse(event.lastTime)) / 86400000 : Infinity;
}
)";

constexpr const char* kProcess = R"(
quorvel.process = function (inputsText, journalsText) {
    const inputs = JSON.parse(inputsText);
    const events = JSON.parse(journalsText).events;
    const now = Date.parse('2026-11-22T10:00:00Z');
    const answer = {
        '%version': '1.0.0', '%isCurrentAppSupported': true, '%usedInputs': ['variation'], '%failureAreas': [],
        variation: inputs.variation, benchmarked: events.benchmarked ? events.benchmarked.count : 0
    };
    const reasons = {};
    for (const rule of rules) {
        const result = rule(inputs, events, now);
        if (result.value !== undefined) { answer[rule.name] = result.value; } else { reasons[rule.name] = result.reason; }
    }
    answer['%reasons'] = reasons;
    return JSON.stringify(answer);
};
)";

} // namespace

QVLJSONDictionary Workload::inputs(std::size_t variation) const {
    Random random;
    std::vector<QVLJSONDictionary::Entry> entries;
    for (std::size_t index = 0; index < inputCount; ++index) {
        entries.push_back({inputName(index), inputValue(random, index)});
    }
    entries.push_back({"variation", static_cast<std::int64_t>(variation)});
    return QVLJSONDictionary(std::move(entries));
}

std::string Workload::journalsText() const {
    Random random;
    std::string events;
    std::string flags;
    for (std::size_t index = 0; index < recordCount; ++index) {
        const std::string name = "\"" + eventName(index) + "\":";
        if (index % 10 == 9) {
            flags += (flags.empty() ? "" : ",") + name + R"({"flag":true,"lastTime":")" + dateText(random) + "\"}";
        } else {
            events += (events.empty() ? "" : ",") + name + R"({"count":)" + std::to_string(1 + random.below(500)) +
                      R"(,"firstTime":"2025-02-03T19:10:02Z","lastTime":")" + dateText(random) + "\"}";
        }
    }
    return R"({"__version__":1,"events":{)" + events + R"(},"flags":{)" + flags + "}}";
}

std::string Workload::script() const {
    Random random;
    std::string text = kPreamble;
    for (std::size_t index = 0; index < ruleCount; ++index) {
        text += ruleText(random, *this, index);
    }
    return text + kProcess;
}
