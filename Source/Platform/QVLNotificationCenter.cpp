#include "QVLNotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace {

struct Registration {
    std::string name;
    bool isForAnySender = false;
    std::weak_ptr<const void> sender;
    QVLNotificationCenter::Observer observer;
    std::atomic<bool> isRemoved{false};

    /// Compared by owner: an object made later at a dead sender's address is somebody else.
    [[nodiscard]] bool matches(const QVLNotification& notification) const {
        return name == notification.name && (isForAnySender || (!sender.owner_before(notification.sender) &&
                                                                !notification.sender.owner_before(sender)));
    }
};

} // namespace

struct QVLNotificationCenter::Registrations {
    std::mutex mutex;
    std::vector<std::shared_ptr<Registration>> all;

    std::vector<std::shared_ptr<Registration>> matching(const QVLNotification& notification) {
        const std::lock_guard lock(mutex);
        std::vector<std::shared_ptr<Registration>> result;
        std::copy_if(all.begin(), all.end(), std::back_inserter(result),
                     [&](const auto& registration) { return registration->matches(notification); });
        return result;
    }
};

QVLNotificationCenter::QVLNotificationCenter() : m_registrations(std::make_shared<Registrations>()) {}

QVLNotificationCenter::~QVLNotificationCenter() = default;

QVLNotificationCenter& QVLNotificationCenter::defaultCenter() {
    // Never destroyed: objects may post and unregister until the process ends.
    static auto* const center = new QVLNotificationCenter;
    return *center;
}

QVLToken QVLNotificationCenter::addObserver(std::string name, const std::shared_ptr<const void>& sender,
                                            Observer observer) {
    return add(std::move(name), /*isForAnySender=*/false, sender, std::move(observer));
}

QVLToken QVLNotificationCenter::addObserver(std::string name, Observer observer) {
    return add(std::move(name), /*isForAnySender=*/true, {}, std::move(observer));
}

QVLToken QVLNotificationCenter::add(std::string name, bool isForAnySender, std::weak_ptr<const void> sender,
                                    Observer observer) {
    auto registration = std::make_shared<Registration>();
    registration->name = std::move(name);
    registration->isForAnySender = isForAnySender;
    registration->sender = std::move(sender);
    registration->observer = std::move(observer);
    {
        const std::lock_guard lock(m_registrations->mutex);
        m_registrations->all.push_back(registration);
    }
    return QVLToken([registration, registrations = std::weak_ptr(m_registrations)] {
        registration->isRemoved = true;
        if (const auto living = registrations.lock()) {
            const std::lock_guard lock(living->mutex);
            std::erase(living->all, registration);
        }
    });
}

void QVLNotificationCenter::post(const QVLNotification& notification) {
    for (const auto& registration : m_registrations->matching(notification)) {
        if (!registration->isRemoved) {
            registration->observer(notification);
        }
    }
}
