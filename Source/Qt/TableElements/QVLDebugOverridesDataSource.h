#pragma once

#include "QVLDebugDataSource.h"

#include <optional>
#include <string>

/// Rows of values that user defaults can override too: their menu copies the key of the default.
class QVLDebugOverridesDataSource : public QVLDebugDataSource {
    Q_OBJECT

public:
    ~QVLDebugOverridesDataSource() override;

    /// "Copy Defaults Key".
    [[nodiscard]] QMenu* contextMenu() override;
    /// Puts the key for the clicked row on the clipboard; without one sounds the alert and leaves the clipboard alone.
    void copyDefaultsKeys(QAction* sender);

protected:
    QVLDebugOverridesDataSource() = default;

    /// No value for a row that there is not.
    [[nodiscard]] virtual std::optional<std::string> defaultsKeyForRow(int clickedRow) const = 0;

private:
    QPointer<QMenu> m_contextMenu;
};
