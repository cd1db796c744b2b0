#include "QVLLinuxBundle.h"
#include "QVLLinuxClock.h"
#include "QVLLinuxFileManager.h"
#include "QVLLinuxHTTPSession.h"
#include "QVLLinuxJavaScriptEngine.h"
#include "QVLLinuxLocalization.h"
#include "QVLLinuxMainRunLoop.h"
#include "QVLLinuxReachabilityTarget.h"
#include "QVLLinuxSerialQueue.h"
#include "QVLLinuxUserDefaults.h"
#include "QVLPlatform.h"

namespace {

std::unique_ptr<QVLSerialQueue> makeSerialQueue(std::string label) {
    return std::make_unique<QVLLinuxSerialQueue>(std::move(label));
}

/// The network is first looked at when the first target is made, which is on the main thread.
std::shared_ptr<QVLReachabilityTarget> makeReachabilityTarget(const QVLReachabilityPeer& peer,
                                                              const std::shared_ptr<QVLMainRunLoop>& mainRunLoop) {
    static const auto* const services = new auto(QVLLinuxReachabilityServices::native(makeSerialQueue, mainRunLoop));
    return QVLLinuxReachabilityTarget::make(peer, *services);
}

} // namespace

QVLPlatform QVLPlatform::native() {
    const auto mainRunLoop = std::make_shared<QVLLinuxMainRunLoop>();
    const auto fileManager = std::make_shared<QVLLinuxFileManager>();
    return {
        .mainRunLoop = mainRunLoop,
        .clock = std::make_shared<QVLLinuxClock>(),
        .userDefaults = QVLLinuxUserDefaults::standard(fileManager),
        .fileManager = fileManager,
        .javaScriptEngine = std::make_shared<QVLLinuxJavaScriptEngine>(),
        .bundle = std::make_shared<QVLLinuxBundle>(QVLLinuxBundle::libraryBundle()),
        .localization = std::make_shared<QVLLinuxLocalization>(),
        .makeSerialQueue = ::makeSerialQueue,
        .makeHTTPSession = [mainRunLoop] { return std::make_shared<QVLLinuxHTTPSession>(mainRunLoop); },
        .makeReachabilityTarget =
            [mainRunLoop](const QVLReachabilityPeer& peer) { return ::makeReachabilityTarget(peer, mainRunLoop); },
    };
}
