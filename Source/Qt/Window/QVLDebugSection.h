#pragma once

#include <QIcon>

#include <string>

class QWidget;

/// One section of the console's window. Main thread; owned by the window, and kept alive while others are shown.
class QVLDebugSection {
public:
    virtual ~QVLDebugSection() = default;

    /// Title of the window and label in its toolbar.
    [[nodiscard]] virtual std::string title() const = 0;
    [[nodiscard]] virtual QIcon toolbarIcon() const = 0;
    /// The section's root view, which it owns; never null.
    [[nodiscard]] virtual QWidget* view() const = 0;
    /// Called before the view is shown.
    virtual void sectionWillDisplay() {}
    /// Called when the window was closed: nothing of the engine is observed until it reopens.
    virtual void windowDidClose() {}
    /// Called before the window is shown again: what changed meanwhile is loaded.
    virtual void windowWillReopen() {}
    /// Called when the palette changed, for colours that a section derives from it.
    virtual void appearanceDidChange() {}
};
