#pragma once

#include <functional>
#include <string>

/// What the console asks of the desktop around it. Main thread; replaceable.
struct QVLDebugDesktop {
    /// Sounds the system's alert.
    std::function<void()> beep;
    /// Opens a file with the system's default application for it.
    std::function<void(const std::string& path)> openFile;
    /// Puts a text on the general clipboard in place of what was there.
    std::function<void(const std::string& text)> copyText;

    /// The one in force.
    [[nodiscard]] static QVLDebugDesktop& current();
    /// The real one.
    [[nodiscard]] static QVLDebugDesktop native();
};
