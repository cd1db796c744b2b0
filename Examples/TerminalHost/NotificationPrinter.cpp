#include "NotificationPrinter.h"

#include "HostFiles.h"
#include "ValueText.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace host {

namespace {

constexpr std::size_t kIndent = 4;

/// Ends the notification's own line.
Page& putRemark(Page& page, const std::string& text) {
    return page.put("  ").put(text, Style::Quiet).endLine();
}

/// The records of either kind, events and flags, that are new or different.
QVLJSONDictionary changedRecords(const QVLJSONDictionary& before, const QVLJSONDictionary& after) {
    std::vector<QVLJSONDictionary::Entry> changed;
    for (const auto& [kind, records] : after) {
        const QVLJSONDictionary known = before.valueForKey(kind.text()).dictionaryOrEmpty();
        for (const auto& [key, record] : records.dictionaryOrEmpty()) {
            if (known.valueForKey(key.text()) != record) {
                changed.push_back({key, record});
            }
        }
    }
    return QVLJSONDictionary(std::move(changed));
}

/// Where a test stands, in words.
std::string textOf(const QVLABTestResult& result) {
    switch (result.status()) {
    case QVLABTestStatusUnknown:
        return result.lastCheckTime() == 0 ? "not asked about yet" : "no answer; asked about again within an hour";
    case QVLABTestStatusParticipating:
        return "taking part";
    case QVLABTestStatusWinGroup:
        return "decided";
    case QVLABTestStatusInvalid:
        return "declared invalid";
    }
    return {};
}

} // namespace

NotificationPrinter::NotificationPrinter(std::shared_ptr<Console> console, std::shared_ptr<QVLQuorvel> engine)
    : m_console(std::move(console)),
      m_engine(std::move(engine)),
      m_journals(m_engine->journals()->qvl_JSONObject().dictionaryOrEmpty()) {
    using Self = NotificationPrinter;
    observe(kQVLQuorvelDidStartNotification, m_engine, &Self::putNothing);
    observe(kQVLQuorvelScriptAvailabilityDidChangeNotification, m_engine, &Self::putAvailability);
    observe(kQVLInputsDidChangeNotification, m_engine, &Self::putInputs);
    observe(kQVLOutputsDidChangeNotification, m_engine, &Self::putOutputs);
    observe(kQVLJournalsDidChangeNotification, m_engine, &Self::putJournals);
    observe(kQVLGoogleAnalyticsEventsDidOccurNotification, m_engine, &Self::putAnalyticsEvents);
    if (m_engine->scriptManager()) {
        observe(kQVLScriptManagerDidFetchScriptsNotification, m_engine->scriptManager(), &Self::putNothing);
    }
    if (m_engine->abtestManager()) {
        observe(kQVLABTestManagerParticipatedNotification, m_engine->abtestManager(), &Self::putTests);
    }
}

void NotificationPrinter::observe(const char* name, const std::shared_ptr<const void>& sender, Printer printer) {
    const auto print = [this, printer](const QVLNotification& notification) {
        Page page = m_console->makePage();
        page.put("  ").put(notification.name, Style::Label);
        (this->*printer)(notification, page);
        m_console->print("Notifications", page);
    };
    m_observations.push_back(QVLNotificationCenter::defaultCenter().addObserver(name, sender, print));
}

void NotificationPrinter::putNothing(const QVLNotification& /*notification*/, Page& page) {
    page.endLine();
}

void NotificationPrinter::putAvailability(const QVLNotification& /*notification*/, Page& page) {
    static constexpr std::array<const char*, 3> kTexts = {"available", "unavailable", "pending"};
    putRemark(page, kTexts[static_cast<std::size_t>(m_engine->scriptAvailability())]);
}

void NotificationPrinter::putInputs(const QVLNotification& /*notification*/, Page& page) {
    putRemark(page, countOf(m_engine->inputKeys().size(), "input"));
}

void NotificationPrinter::putOutputs(const QVLNotification& notification, Page& page) {
    const auto* const keys = notification.value<std::vector<std::string>>(kQVLChangedOutputKeys);
    std::vector<std::string> changedKeys = keys ? *keys : std::vector<std::string>();
    std::sort(changedKeys.begin(), changedKeys.end());
    putRemark(page, countOf(changedKeys.size(), "changed key"));
    putChangedOutputs(page, *m_engine, changedKeys, kIndent);
}

void NotificationPrinter::putJournals(const QVLNotification& /*notification*/, Page& page) {
    const std::string path = m_engine->quorvelDirectoryPath() + "/" + kQVLJournalsFile;
    putRemark(page, textOfJournals(*m_engine->journals()) + ", saved in " + shortPath(path));
    const QVLJSONDictionary journals = m_engine->journals()->qvl_JSONObject().dictionaryOrEmpty();
    for (const auto& [key, record] : changedRecords(m_journals, journals)) {
        page.padTo(kIndent).put(key.text(), Style::Label).put("  ");
        putMembersInLine(page, record.dictionaryOrEmpty());
        page.endLine();
    }
    m_journals = journals;
}

void NotificationPrinter::putAnalyticsEvents(const QVLNotification& notification, Page& page) {
    using Events = std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>;
    const auto* const events = notification.value<Events>(kQVLGoogleAnalyticsEventsUserInfoKey);
    std::vector<ReportedEvent> reported;
    for (const auto& event : events ? *events : Events()) {
        reported.push_back({event->category() == kQVLEventLoadCategory ? "status" : "session", event});
    }
    putRemark(page, countOf(reported.size(), "event"));
    putEvents(page, reported, kIndent);
    m_events.insert(m_events.end(), reported.begin(), reported.end());
}

void NotificationPrinter::putTests(const QVLNotification& /*notification*/, Page& page) {
    page.endLine();
    for (const auto& [guid, result] : m_engine->abtestManager()->testResults()) {
        page.padTo(kIndent).put(guid, Style::Label).put("  ").put(textOf(*result)).endLine();
    }
}

} // namespace host
