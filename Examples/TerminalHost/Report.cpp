#include "Report.h"

#include "ValueText.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>

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

void putRow(Page& page, const EventRow& row, const EventRow& widest) {
    std::size_t position = kIndent;
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

} // namespace

void printSources(Console& console, const std::vector<Source>& sources) {
    std::size_t widest = 0;
    for (const Source& source : sources) {
        widest = std::max(widest, Page::widthOf(source.name));
    }
    Page page = console.makePage();
    for (const Source& source : sources) {
        page.padTo(kIndent).put(source.name, Style::Label).padTo(kIndent + widest + kGap).put(source.text).endLine();
    }
    console.print("Run", page);
}

void printEvents(Console& console, const std::vector<ReportedEvent>& events) {
    std::vector<EventRow> rows(events.size());
    std::transform(events.begin(), events.end(), rows.begin(), rowOf);
    const EventRow widest = widestOf(rows);
    Page page = console.makePage();
    for (std::size_t index = 0; index < events.size(); ++index) {
        putRow(page, rows[index], widest);
        putMembersInLine(page, events[index].event->dimensions().value_or(QVLJSONDictionary()));
        page.endLine();
    }
    if (events.empty()) {
        page.padTo(kIndent).put("none", Style::Quiet).endLine();
    }
    console.print("Analytics events", page);
}

void printBookkeeping(Console& console, const QVLJSONDictionary& answer) {
    std::vector<QVLJSONDictionary::Entry> entries;
    std::copy_if(answer.begin(), answer.end(), std::back_inserter(entries), isBookkeeping);
    Page page = console.makePage();
    putMembersOrNone(page, QVLJSONDictionary(std::move(entries)));
    putTimeToNextTrigger(page, answer.valueForKey(kQVLScriptTimeToNextTriggerKey));
    console.print("Bookkeeping", page);
}

void printOutputs(Console& console, const QVLJSONDictionary& outputs) {
    Page page = console.makePage();
    putMembersOrNone(page, outputs);
    console.print("Outputs", page);
}

void printRemark(Console& console, const std::string& text) {
    Page page = console.makePage();
    page.padTo(kIndent).put(text, Style::Quiet).endLine();
    console.print("Log", page);
}

} // namespace host
