#pragma once

#include <functional>
#include <optional>
#include <string>

class QMenu;
class QWidget;

/// A menu with the one item "Copy Defaults Key". The parent owns it.
[[nodiscard]] QMenu* qvl_makeDefaultsKeyMenu(QWidget* parent, std::function<void()> copy);

/// Puts the key on the clipboard; without one sounds the alert and leaves the clipboard alone.
void qvl_copyDefaultsKey(const std::optional<std::string>& key);
