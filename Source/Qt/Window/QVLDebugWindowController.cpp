#include "QVLDebugWindowController.h"

#include "QVLDebugInputsViewController.h"
#include "QVLDebugJournalViewController.h"
#include "QVLDebugOutputsViewController.h"
#include "QVLDebugScriptsViewController.h"
#include "QVLDebugWindow.h"

std::shared_ptr<QVLDebugWindowController>
QVLDebugWindowController::initWithQuorvel(const std::shared_ptr<QVLQuorvel>& quorvel,
                                          const std::shared_ptr<QVLInputsManager>& inputsManager) {
    return std::shared_ptr<QVLDebugWindowController>(new QVLDebugWindowController(quorvel, inputsManager));
}

QVLDebugWindowController::QVLDebugWindowController(std::shared_ptr<QVLQuorvel> quorvel,
                                                   std::shared_ptr<QVLInputsManager> inputsManager)
    : m_quorvel(std::move(quorvel)),
      m_inputsManager(std::move(inputsManager)),
      m_window(std::make_unique<QVLDebugWindow>()) {
    m_window->setSections({
        QVLDebugInputsViewController::initWithQuorvel(m_quorvel, m_inputsManager),
        QVLDebugOutputsViewController::initWithQuorvel(m_quorvel),
        QVLDebugJournalViewController::initWithQuorvel(m_quorvel),
        QVLDebugScriptsViewController::initWithQuorvel(m_quorvel),
    });
    m_window->center();
}

QVLDebugWindowController::~QVLDebugWindowController() = default;

QMainWindow* QVLDebugWindowController::window() const {
    return m_window.get();
}

void QVLDebugWindowController::showWindow() {
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void QVLDebugWindowController::close() {
    m_window->close();
}
