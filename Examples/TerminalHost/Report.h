#pragma once

#include "Console.h"

#include <Quorvel/Quorvel.h>

#include <memory>
#include <string>
#include <vector>

namespace host {

/// One line of what the program works with: its name and what it is.
struct Source {
    std::string name;
    std::string text;
};

struct ReportedEvent {
    std::string kind;
    std::shared_ptr<QVLAnalyticsEventInternal> event;
};

/// "1 event", "2 events".
[[nodiscard]] std::string countOf(std::size_t count, const std::string& what);
[[nodiscard]] std::string textOfJournals(const QVLJournals& journals);

/// The outputs as hosts see them.
[[nodiscard]] QVLJSONDictionary visibleOutputs(const QVLQuorvel& engine);

/// The outputs of these keys as they are now; of bookkeeping the names only.
void putChangedOutputs(Page& page, const QVLQuorvel& engine, const std::vector<std::string>& keys, std::size_t indent);

void putEvents(Page& page, const std::vector<ReportedEvent>& events, std::size_t indent);

void printSources(Console& console, const std::string& section, const std::vector<Source>& sources);
void printOutputs(Console& console, const QVLJSONDictionary& outputs);
void printRemark(Console& console, const std::string& section, const std::string& text);

/// Everything that the engine has come to: these events and its dimensions, and after a run that succeeded the
/// bookkeeping and the outputs.
void printReport(Console& console, const QVLQuorvel& engine, std::vector<ReportedEvent> events);

/// Why the script gave no good answer, in words; empty when it gave one.
[[nodiscard]] std::string reasonOfFailure(const QVLQuorvel& engine, const std::vector<ReportedEvent>& events);

} // namespace host
