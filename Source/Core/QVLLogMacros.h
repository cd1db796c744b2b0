#pragma once

#include "QVLLogging.h"
#include "QVLPlatform.h"

// The places of the library that log. A macro is what supplies file, line and function of the call.

/// "QVLJSONStore::saveJSONObject" out of the compiler's whole signature.
[[nodiscard]] QVL_EXPORT std::string QVLShortFunctionName(const char* prettyFunction);

// NOLINTBEGIN(cppcoreguidelines-macro-usage)
// A block of its own, since clang 14 ends the life of the temporaries with the block around and not with the statement,
// and in a switch even where the statement is jumped over.
#define QVL_LOG(level, object, ...)                                                                                    \
    do {                                                                                                               \
        QVLLog(level, __FILE__, __LINE__, QVLShortFunctionName(__PRETTY_FUNCTION__).c_str(), object, __VA_ARGS__);     \
    } while (false)
#define QVL_LOG_DEBUG(object, ...) QVL_LOG(QVLLogLevelDebug, object, __VA_ARGS__)
#define QVL_LOG_INFO(object, ...) QVL_LOG(QVLLogLevelInfo, object, __VA_ARGS__)
#define QVL_LOG_ERROR(object, ...) QVL_LOG(QVLLogLevelError, object, __VA_ARGS__)

#define QVL_ASSERT(condition, conditionText, object, ...)                                                              \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            QVLAssertDispatch(false, conditionText, __FILE__, __LINE__,                                                \
                              QVLShortFunctionName(__PRETTY_FUNCTION__).c_str(), object, __VA_ARGS__);                 \
        }                                                                                                              \
    } while (false)
#define QVL_ASSERT_PARAMETER(condition, object)                                                                        \
    QVL_ASSERT(condition, #condition, object, "Invalid parameter not satisfying: %s", #condition)
#define QVL_ASSERT_MAIN_THREAD(object)                                                                                 \
    QVL_ASSERT(QVLMainRunLoop::mainRunLoop()->isMainThread(), "[NSThread isMainThread]", object,                       \
               "Should always execute on main thread")
#define QVL_ASSERT_NOT_MAIN_THREAD(object)                                                                             \
    QVL_ASSERT(!QVLMainRunLoop::mainRunLoop()->isMainThread(), "![NSThread isMainThread]", object,                     \
               "Should never execute on main thread")
// NOLINTEND(cppcoreguidelines-macro-usage)
