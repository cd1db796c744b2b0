#pragma once

#include "QVLDate.h"
#include "QVLJSONValue.h"
#include "QVLObject.h"
#include "QVLToken.h"
#include "QVLURL.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Which kind of script a record describes; decides where its local file lives.
enum class QVLScriptSource : std::int64_t {
    /// An entry of the nightly feed.
    QVLScriptSourceNightly = 0,
    /// The script that the environment's remote script URL names.
    QVLScriptSourceRemote = 1,
    /// The script shipped in the library's own resources.
    QVLScriptSourceBundled = 2,
};
using enum QVLScriptSource;

/// How far a script has got on the way to a usable local file.
enum class QVLScriptState : std::uint64_t {
    /// No local file was found and no download was started.
    QVLScriptStateUnknown = 0,
    QVLScriptStateDownloading = 1,
    /// The last download, or the saving of its data, failed.
    QVLScriptStateFailed = 2,
    /// The local file exists and can be loaded.
    QVLScriptStateAvailable = 3,
};
using enum QVLScriptState;

/// One rules script that the library knows of: where it comes from, its version, and how far its local copy has got.
///
/// Never holds the script's text. Made and changed on the main thread; everything but the state is fixed at creation
/// and may be read on any thread. Owned by the script manager.
class QVL_EXPORT QVLScript final : public QVLObject, public std::enable_shared_from_this<QVLScript> {
public:
    using StateObserver = std::function<void(QVLScript&)>;

    [[nodiscard]] static std::shared_ptr<QVLScript> initWithVersion(std::optional<std::string> version,
                                                                    std::optional<QVLDate> dateCreated,
                                                                    std::string title, std::optional<QVLURL> url,
                                                                    QVLScriptSource source);

    /// A record of one entry of the nightly feed, or null after one error line when "version", "date" or "url" is
    /// missing or invalid.
    [[nodiscard]] static std::shared_ptr<QVLScript> scriptWithJSONObject(const QVLJSONDictionary& JSONObject);

    /// A record of a script file. A file that is missing or is no UTF-8 text gives a record without version and date in
    /// state 0 (an info line); one without a version header gives an available record without version (an error line).
    [[nodiscard]] static std::shared_ptr<QVLScript> scriptWithPath(const std::string& path, const std::string& title,
                                                                   const std::optional<QVLURL>& url,
                                                                   QVLScriptSource source);

    /// The version that the first header line of a script text declares, for example "2.14.0" of "//
    /// Quorvel 2.14.0.js"; no value without one. Any thread.
    [[nodiscard]] static std::optional<std::string> parseScriptVersionFromJSContent(std::string_view content);

    /// Label for the debug console.
    [[nodiscard]] const std::string& title() const { return m_title; }
    [[nodiscard]] const std::optional<std::string>& version() const { return m_version; }
    /// When a feed's script was made, or the local file; no value when unknown.
    [[nodiscard]] const std::optional<QVLDate>& dateCreated() const { return m_dateCreated; }
    /// Where the script is downloaded from; no value for the built-in script.
    [[nodiscard]] const std::optional<QVLURL>& url() const { return m_url; }
    [[nodiscard]] QVLScriptSource source() const { return m_source; }

    [[nodiscard]] QVLScriptState state() const { return m_state; }
    /// Observers are told of every assignment, also of an equal one.
    void setState(QVLScriptState state);
    /// Calls the observer after each assignment of the state, until the token is dropped.
    [[nodiscard]] QVLToken observeState(StateObserver observer);

    /// Equal versions and sources make equal records; one without a version equals only itself.
    [[nodiscard]] bool isEqual(const QVLObject& other) const override;
    [[nodiscard]] std::size_t hash() const override;
    [[nodiscard]] std::string className() const override { return "QVLScript"; }

private:
    struct Observers;

    QVLScript(std::optional<std::string> version, std::optional<QVLDate> dateCreated, std::string title,
              std::optional<QVLURL> url, QVLScriptSource source);

    const std::string m_title;
    const std::optional<std::string> m_version;
    const std::optional<QVLDate> m_dateCreated;
    const std::optional<QVLURL> m_url;
    const QVLScriptSource m_source;
    QVLScriptState m_state = QVLScriptStateUnknown;
    // Shared with the tokens, which may outlive the record.
    std::shared_ptr<Observers> m_observers;
};
