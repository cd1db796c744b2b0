#pragma once

#include <Quorvel/Quorvel.h>

#include <memory>
#include <string>
#include <vector>

namespace host {

/// Every script that the manager knows.
[[nodiscard]] std::vector<std::shared_ptr<QVLScript>> scriptsOf(const QVLScriptManager& manager);

/// One line on a script: what it is, and what the manager makes of it.
[[nodiscard]] std::string textOf(const QVLScript& script, const QVLScriptManager& manager);

/// True after a failed download, after which the manager fetches no more, although it says that it does.
[[nodiscard]] bool hasStoppedFetching(const QVLScriptManager& manager);

/// Whether a script or a feed is on its way.
[[nodiscard]] bool isDownloading(const QVLScriptManager& manager);

} // namespace host
