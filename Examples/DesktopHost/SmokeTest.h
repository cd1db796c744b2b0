#pragma once

#include "NotesWindow.h"

#include <QTimer>

#include <functional>
#include <vector>

/// Uses the application as its user and its developer would, one step after the other, and then closes it. A step that
/// does not come about ends the process with the status 1 and a line that names it.
class SmokeTest final : public QObject {
    Q_OBJECT

public:
    explicit SmokeTest(NotesWindow& window);

private:
    struct Step {
        const char* name;
        /// Tried again and again until it is true.
        std::function<bool()> isDone;
    };
    void next();
    void addSteps();
    void addConsoleSteps();
    [[nodiscard]] QWidget* console() const;

    NotesWindow& m_window;
    std::vector<Step> m_steps;
    std::size_t m_current = 0;
    int m_tries = 0;
    QTimer m_timer;
};
