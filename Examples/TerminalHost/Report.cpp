#include "Report.h"

#include "ValueText.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <string_view>
#include <utility>

namespace host {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;

/// The columns of an event before its dimensions: kind, category, action, label and value.
using EventRow = std::array<std::string, 5>;

EventRow rowOf(const ReportedEvent& reported) {
    const QVLAnalyticsEvent& event = *reported.event;
    const QVLJSONValue value = event.value();
    return {reported.kind, event.category().value_or(""), event.action().value_or(""), event.label().value_or(""),
            value.isNothing() ? "" : value.description()};
}

EventRow widestOf(const std::vector<EventRow>& rows) {
    EventRow widest;
    for (const EventRow& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            if (Page::widthOf(row[column]) > Page::widthOf(widest[column])) {
                widest[column] = row[column];
            }
        }
    }
    return widest;
}

void putRow(Page& page, const EventRow& row, const EventRow& widest, std::size_t indent) {
    std::size_t position = indent;
    for (std::size_t column = 0; column < row.size(); ++column) {
        if (widest[column].empty()) {
            continue;
        }
        const bool isMissing = row[column].empty();
        page.padTo(position).put(isMissing ? "-" : row[column], column == 0 || isMissing ? Style::Quiet : Style::Plain);
        position += Page::widthOf(widest[column]) + kGap;
    }
    page.padTo(position);
}

bool isBookkeeping(const QVLJSONDictionary::Entry& entry) {
    const std::string& key = entry.key.text();
    const bool isListOfEvents =
        key == kQVLScriptGoogleAnalyticsDimensionsKey || key == kQVLScriptGoogleAnalyticsSessionEventsKey;
    return key.starts_with('%') && !(isListOfEvents && entry.value.isArray());
}

void putMembersOrNone(Page& page, const QVLJSONDictionary& members) {
    if (members.isEmpty()) {
        page.padTo(kIndent).put("none", Style::Quiet).endLine();
    }
    putMembers(page, members, kIndent);
}

/// "2 d 6 h 45 min" for 197100 seconds; parts that are zero are left out.
std::string durationText(std::chrono::seconds duration) {
    struct Unit {
        std::int64_t seconds;
        const char* name;
    };
    static constexpr std::array<Unit, 4> kUnits = {{{86400, " d "}, {3600, " h "}, {60, " min "}, {1, " s "}}};
    std::int64_t rest = duration.count();
    std::string text;
    for (const Unit& unit : kUnits) {
        if (const std::int64_t count = rest / unit.seconds; count > 0) {
            text += std::to_string(count) + unit.name;
        }
        rest %= unit.seconds;
    }
    return text.empty() ? "0 s" : text.substr(0, text.size() - 1);
}

void putTimeToNextTrigger(Page& page, const QVLJSONValue& seconds) {
    if (seconds.doubleValue() > 0) {
        const std::string duration = durationText(std::chrono::seconds(seconds.qvl_castToIntegerValue()));
        page.padTo(kIndent).put("Time alone may change the outputs in " + duration + ".", Style::Quiet).endLine();
    }
}

void printBookkeeping(Console& console, const QVLJSONDictionary& answer) {
    std::vector<QVLJSONDictionary::Entry> entries;
    std::copy_if(answer.begin(), answer.end(), std::back_inserter(entries), isBookkeeping);
    Page page = console.makePage();
    putMembersOrNone(page, QVLJSONDictionary(std::move(entries)));
    putTimeToNextTrigger(page, answer.valueForKey(kQVLScriptTimeToNextTriggerKey));
    console.print("Bookkeeping", page);
}

void putNames(Page& page, const std::vector<std::string>& names, std::size_t indent) {
    page.padTo(indent);
    for (const std::string& name : names) {
        const std::string text = name + (&name == &names.back() ? "" : ", ");
        if (!page.hasRoomFor(Page::widthOf(text)) && page.column() > indent) {
            page.endLine().padTo(indent);
        }
        page.put(text, Style::Quiet);
    }
    page.endLine();
}

/// What a status event means for whoever wrote the script.
std::string_view meaningOfStatus(std::string_view status) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kMeanings = {{
        {kQVLEventLoadStatusNotFound, "it cannot be read"},
        {kQVLEventLoadStatusNotInstalled, "it throws, or leaves no quorvel.process"},
        {kQVLEventLoadStatusNotSupported, "it does not support this version of the application"},
        {kQVLEventLoadStatusBadResponse, "it throws, or does not answer with the text of a JSON object"},
        {kQVLEventLoadStatusRuntimeError, "it answers with an error"},
        {kQVLEventRunStatusSomeErrors, "some of its rules failed"},
    }};
    for (const auto& [known, meaning] : kMeanings) {
        if (known == status) {
            return meaning;
        }
    }
    return {};
}

} // namespace

std::string countOf(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string textOfJournals(const QVLJournals& journals) {
    return countOf(journals.allEventKeys().size(), "event") + " and " + countOf(journals.allFlagKeys().size(), "flag");
}

// Outputs are read one by one, as hosts read them: overrides count, and so does the switch that hides all outputs.
QVLJSONDictionary visibleOutputs(const QVLQuorvel& engine) {
    std::vector<QVLJSONDictionary::Entry> entries;
    for (const std::string& key : engine.outputKeys()) {
        if (const std::shared_ptr<QVLOutput> output = engine.outputForKey(key)) {
            entries.push_back({key, output->genericValue()});
        }
    }
    return QVLJSONDictionary(std::move(entries));
}

void putChangedOutputs(Page& page, const QVLQuorvel& engine, const std::vector<std::string>& keys, std::size_t indent) {
    std::vector<QVLJSONDictionary::Entry> present;
    std::vector<std::string> bookkeeping;
    std::vector<std::string> removed;
    for (const std::string& key : keys) {
        const std::shared_ptr<QVLOutput> output = engine.outputForKey(key);
        if (!output) {
            removed.push_back(key);
        } else if (key.starts_with('%')) {
            bookkeeping.push_back(key);
        } else {
            present.push_back({key, output->genericValue()});
        }
    }
    putMembers(page, QVLJSONDictionary(std::move(present)), indent);
    for (const std::string& key : removed) {
        page.padTo(indent).put("- " + key + " (removed)", Style::Quiet).endLine();
    }
    if (!bookkeeping.empty()) {
        putNames(page, bookkeeping, indent);
    }
}

void putEvents(Page& page, const std::vector<ReportedEvent>& events, std::size_t indent) {
    std::vector<EventRow> rows(events.size());
    std::transform(events.begin(), events.end(), rows.begin(), rowOf);
    const EventRow widest = widestOf(rows);
    for (std::size_t index = 0; index < events.size(); ++index) {
        putRow(page, rows[index], widest, indent);
        putMembersInLine(page, events[index].event->dimensions().value_or(QVLJSONDictionary()));
        page.endLine();
    }
    if (events.empty()) {
        page.padTo(indent).put("none", Style::Quiet).endLine();
    }
}

void printSources(Console& console, const std::string& section, const std::vector<Source>& sources) {
    std::size_t widest = 0;
    for (const Source& source : sources) {
        widest = std::max(widest, Page::widthOf(source.name));
    }
    Page page = console.makePage();
    for (const Source& source : sources) {
        page.padTo(kIndent).put(source.name, Style::Label).padTo(kIndent + widest + kGap).put(source.text).endLine();
    }
    console.print(section, page);
}

void printOutputs(Console& console, const QVLJSONDictionary& outputs) {
    Page page = console.makePage();
    putMembersOrNone(page, outputs);
    console.print("Outputs", page);
}

void printRemark(Console& console, const std::string& section, const std::string& text) {
    Page page = console.makePage();
    page.padTo(kIndent).put(text, Style::Quiet).endLine();
    console.print(section, page);
}

void printReport(Console& console, const QVLQuorvel& engine, std::vector<ReportedEvent> events) {
    for (const auto& event : engine.analyticsEventsWithExtraDimensions()) {
        events.push_back({"dimensions", event});
    }
    Page page = console.makePage();
    putEvents(page, events, kIndent);
    console.print("Analytics events", page);
    if (engine.lastRunDate()) {
        printBookkeeping(console, engine.outputs());
        printOutputs(console, visibleOutputs(engine));
    }
}

std::string reasonOfFailure(const QVLQuorvel& engine, const std::vector<ReportedEvent>& events) {
    for (const ReportedEvent& reported : events) {
        // The first status tells most: that a script is not supported may follow from a bad answer.
        if (reported.kind == "status") {
            return std::string(meaningOfStatus(reported.event->action().value_or("")));
        }
    }
    return engine.lastRunDate() ? "" : "the log says why";
}

} // namespace host
