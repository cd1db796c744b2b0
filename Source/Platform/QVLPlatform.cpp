#include "QVLPlatform.h"

#include <mutex>

namespace {

struct Slot {
    std::mutex mutex;
    std::shared_ptr<const QVLPlatform> installed;
    std::shared_ptr<const QVLPlatform> native;
};

Slot& slot() {
    // Never destroyed: queues still running at exit may ask for their services.
    static auto* const slot = new Slot;
    return *slot;
}

} // namespace

std::shared_ptr<const QVLPlatform> QVLPlatform::current() {
    const std::lock_guard lock(slot().mutex);
    if (slot().installed) {
        return slot().installed;
    }
    if (!slot().native) {
        slot().native = std::make_shared<const QVLPlatform>(native());
    }
    return slot().native;
}

void QVLPlatform::install(std::shared_ptr<const QVLPlatform> platform) {
    const std::lock_guard lock(slot().mutex);
    slot().installed = std::move(platform);
}

QVLMainRunLoop::~QVLMainRunLoop() = default;

std::shared_ptr<QVLMainRunLoop> QVLMainRunLoop::mainRunLoop() {
    return QVLPlatform::current()->mainRunLoop;
}
