#pragma once

#include "Console.h"
#include "Report.h"

#include <Quorvel/Quorvel.h>

#include <memory>
#include <string>
#include <vector>

namespace host {

/// Prints every notification of an engine and its managers as it arrives, and keeps the analytics events.
class NotificationPrinter final {
public:
    NotificationPrinter(std::shared_ptr<Console> console, std::shared_ptr<QVLQuorvel> engine);

    /// Prints no more.
    void end() { m_observations.clear(); }

    /// All analytics events so far.
    [[nodiscard]] const std::vector<ReportedEvent>& events() const { return m_events; }

private:
    using Printer = void (NotificationPrinter::*)(const QVLNotification& notification, Page& page);
    void observe(const char* name, const std::shared_ptr<const void>& sender, Printer printer);

    // Each puts what follows the notification's name.
    void putNothing(const QVLNotification& notification, Page& page);
    void putAvailability(const QVLNotification& notification, Page& page);
    void putInputs(const QVLNotification& notification, Page& page);
    void putOutputs(const QVLNotification& notification, Page& page);
    void putJournals(const QVLNotification& notification, Page& page);
    void putAnalyticsEvents(const QVLNotification& notification, Page& page);
    void putTests(const QVLNotification& notification, Page& page);

    const std::shared_ptr<Console> m_console;
    const std::shared_ptr<QVLQuorvel> m_engine;
    /// As they were at the last notification.
    QVLJSONDictionary m_journals;
    std::vector<ReportedEvent> m_events;
    std::vector<QVLToken> m_observations;
};

} // namespace host
