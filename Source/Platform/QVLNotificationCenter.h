#pragma once

#include "QVLExport.h"
#include "QVLToken.h"

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

/// One broadcast: a name, who sent it, and what the sender adds.
struct QVL_EXPORT QVLNotification {
    std::string name;
    /// The object that posted.
    std::shared_ptr<const void> sender;
    std::map<std::string, std::any, std::less<>> userInfo;

    /// The value under the key, or null when there is none of this type.
    template <class Value>
    [[nodiscard]] const Value* value(std::string_view key) const {
        const auto entry = userInfo.find(key);
        return entry == userInfo.end() ? nullptr : std::any_cast<Value>(&entry->second);
    }
};

/// Named broadcasts within the process.
///
/// Observers are called one after the other on the thread that posts, in the order of registration, before `post`
/// returns. The library posts on the main thread only. An observer may add and remove observers, post, and drop the
/// sender; one that was removed is not called any more, even by a post that is under way, and one that was added is
/// first called by the next post.
class QVL_EXPORT QVLNotificationCenter {
public:
    using Observer = std::function<void(const QVLNotification&)>;

    QVLNotificationCenter();
    QVLNotificationCenter(const QVLNotificationCenter&) = delete;
    QVLNotificationCenter& operator=(const QVLNotificationCenter&) = delete;
    ~QVLNotificationCenter();

    /// The process's centre, on which the library posts. Any thread.
    [[nodiscard]] static QVLNotificationCenter& defaultCenter();

    /// Calls the observer for each post of this name by this sender, until the token is dropped. The sender is held
    /// weakly.
    [[nodiscard]] QVLToken addObserver(std::string name, const std::shared_ptr<const void>& sender, Observer observer);

    /// The same for every sender.
    [[nodiscard]] QVLToken addObserver(std::string name, Observer observer);

    void post(const QVLNotification& notification);

private:
    struct Registrations;
    QVLToken add(std::string name, bool isForAnySender, std::weak_ptr<const void> sender, Observer observer);

    // Shared with the tokens, which may outlive the centre.
    std::shared_ptr<Registrations> m_registrations;
};
