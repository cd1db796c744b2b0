#pragma once

#include "QVLBundle.h"
#include "QVLClock.h"
#include "QVLFileManager.h"
#include "QVLHTTPSession.h"
#include "QVLJavaScriptContext.h"
#include "QVLLocalization.h"
#include "QVLMainRunLoop.h"
#include "QVLReachabilityTarget.h"
#include "QVLSerialQueue.h"
#include "QVLUserDefaults.h"

#include <functional>
#include <memory>
#include <string>

/// The services of the platform that the library is built on, each behind an interface of its own.
///
/// A process has one set, made on first use. Objects with a life of their own take the set that is current when they
/// are made and keep it.
struct QVLPlatform {
    std::shared_ptr<QVLMainRunLoop> mainRunLoop;
    std::shared_ptr<const QVLClock> clock;
    std::shared_ptr<QVLUserDefaults> userDefaults;
    std::shared_ptr<QVLFileManager> fileManager;
    std::shared_ptr<QVLJavaScriptEngine> javaScriptEngine;
    std::shared_ptr<const QVLBundle> bundle;
    std::shared_ptr<const QVLLocalization> localization;
    std::function<std::unique_ptr<QVLSerialQueue>(std::string label)> makeSerialQueue;
    std::function<std::shared_ptr<QVLHTTPSession>()> makeHTTPSession;
    QVLReachabilityTargetMaker makeReachabilityTarget;

    /// The set in force. Any thread.
    [[nodiscard]] QVL_EXPORT static std::shared_ptr<const QVLPlatform> current();

    /// Puts another set in force; null brings back the platform's own. For tests, while no engine lives.
    static void install(std::shared_ptr<const QVLPlatform> platform);

    /// The platform's own services.
    [[nodiscard]] static QVLPlatform native();
};
