#pragma once

#include "QVLExport.h"
#include "QVLInputsManager.h"

#include <memory>

class QMainWindow;
class QVLDebugWindow;
class QVLQuorvel;

/// The debug console of one engine: a window in which a developer inspects and overrides its inputs and outputs, edits
/// its journals, and chooses its script.
///
/// The library never opens it: a host that finds the debug tools unlocked (`debugToolsAvailable` of the environment)
/// makes a controller, shows the window, and keeps the controller for as long as the console is wanted. Needs a
/// `QApplication`; a host of another toolkit makes one and leaves the event loop to its own toolkit, since both run the
/// default GLib main context.
///
/// Main thread. Holds the engine and the manager strongly; when it is destroyed, nothing of the console is left: no
/// window, no observer, no timer. Once the window was closed nothing is observed either, and no timer runs; shown again,
/// it loads what changed meanwhile. On disk: the size that the window was given, in the user defaults.
class QVL_EXPORT QVLDebugWindowController final {
public:
    /// A controller with its window, not yet shown and in the middle of the screen. The manager may be null: then there
    /// are no generation times.
    [[nodiscard]] static std::shared_ptr<QVLDebugWindowController>
    initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel, const std::shared_ptr<QVLInputsManager>& inputsManager);
    QVLDebugWindowController(const QVLDebugWindowController&) = delete;
    QVLDebugWindowController& operator=(const QVLDebugWindowController&) = delete;
    ~QVLDebugWindowController();

    [[nodiscard]] const std::shared_ptr<QVLQuorvel>& quorvel() const { return m_quorvel; }
    [[nodiscard]] const std::shared_ptr<QVLInputsManager>& inputsManager() const { return m_inputsManager; }

    /// The console's window; the controller owns it.
    [[nodiscard]] QMainWindow* window() const;
    /// Shows the window in front of others.
    void showWindow();
    /// Closes the window, as its close button does. The application goes on, even if this was its last window.
    void close();

private:
    QVLDebugWindowController(std::shared_ptr<QVLQuorvel> quorvel, std::shared_ptr<QVLInputsManager> inputsManager);

    const std::shared_ptr<QVLQuorvel> m_quorvel;
    const std::shared_ptr<QVLInputsManager> m_inputsManager;
    std::unique_ptr<QVLDebugWindow> m_window;
};
