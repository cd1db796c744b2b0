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

void printSources(Console& console, const std::vector<Source>& sources);

struct ReportedEvent {
    std::string kind;
    std::shared_ptr<QVLAnalyticsEventInternal> event;
};

void printEvents(Console& console, const std::vector<ReportedEvent>& events);

/// Those of an answer's members that are bookkeeping, but for the lists of events, which `printEvents` shows.
void printBookkeeping(Console& console, const QVLJSONDictionary& answer);

void printOutputs(Console& console, const QVLJSONDictionary& outputs);

/// A remark among the log lines.
void printRemark(Console& console, const std::string& text);

} // namespace host
