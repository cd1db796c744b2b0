// The manager's conversation with the service.

#include "QVLABTestManager.h"

#include "QVLAccount.h"
#include "QVLHTTPSession.h"
#include "QVLJSONSerialization.h"
#include "QVLLogMacros.h"
#include "QVLNotificationCenter.h"
#include "QVLPlatform.h"
#include "QVLQuorvelEnvironment.h"

#include <any>
#include <chrono>
#include <utility>

namespace {

constexpr const char* kParticipatePath = "/third/abtest/api/participate/experiment";
constexpr QVLTimeInterval kRequestTimeout = std::chrono::seconds(60);
/// A group is small. An answer is read on the main thread, which must not stand still for it, and is part of every
/// cache that is saved from then on.
constexpr std::size_t kLongestReply = std::size_t{256} * 1024;
/// What the service calls this kind of client.
constexpr int kClient = 3;

struct Delivery {
    std::int64_t code = 0;
    std::optional<QVLJSONDictionary> data = std::nullopt;
    std::optional<QVLError> error = std::nullopt;
};

[[nodiscard]] Delivery failure(int code, const char* message) {
    return {.error = QVLError{QVLABTestErrorDomain, code, message}};
}

[[nodiscard]] Delivery deliveryFor(const QVLHTTPReply& reply) {
    if (reply.error || !reply.response) {
        return {.error = reply.error};
    }
    if (!reply.response->hasBody()) {
        return failure(QVLABTestErrorNoData, "No data");
    }
    if (reply.response->statusCode != 200) {
        return failure(QVLABTestErrorInvalidResponseCode, "Invalid response code");
    }
    const QVLJSONReadResult read = QVLJSONSerialization::JSONObjectWithData(reply.response->body);
    if (!read.value.isDictionary()) {
        return failure(QVLABTestErrorInvalidJSON, "Cannot get valid json response");
    }
    const QVLJSONDictionary members = read.value.dictionaryOrEmpty();
    return {.code = members.valueForKey("code").qvl_castToIntegerValue(),
            .data = members.valueForKey("data").qvl_castToDictionaryValue()};
}

} // namespace

void QVLABTestManager::participate(const std::shared_ptr<QVLABTestResult>& result) {
    if (m_testsBeingAsked.contains(result->testGuid())) {
        return;
    }
    const std::optional<std::string> host = m_environment->abtestHost();
    const std::optional<QVLURL> url = host ? QVLURL::fromString("https://" + *host + kParticipatePath) : std::nullopt;
    if (!url) {
        QVL_LOG_ERROR(this, "ABTest: no service to ask about test: %@, host: %@", result->testGuid(), host);
        return;
    }
    m_testsBeingAsked.insert(result->testGuid());
    request(generateABTestRequestWithURL(*url, result->testGuid()),
            [weakSelf = weak_from_this(), result](std::int64_t code, const std::optional<QVLJSONDictionary>& data,
                                                  const std::optional<QVLError>& /*error*/) {
                if (const auto self = weakSelf.lock()) {
                    self->m_testsBeingAsked.erase(result->testGuid());
                    self->applyReply(*result, code, data);
                }
            });
}

void QVLABTestManager::applyReply(QVLABTestResult& result, std::int64_t code,
                                  const std::optional<QVLJSONDictionary>& data) {
    const auto participant = data ? QVLABTestParticipant::initWithTestGuid(result.testGuid(), *data) : nullptr;
    bool hasChanged = false;
    if (code == kQVLABTestInvalidatedServiceCode) {
        hasChanged = result.invalidate();
    } else if (participant && participant->status() == kQVLABTestParticipantStatusDecided) {
        hasChanged = result.onWinGroup(participant->group());
    } else {
        hasChanged = result.onParticipant(participant);
    }
    if (hasChanged) {
        didUpdateTestResult(result.testGuid(), /*postNotification=*/true);
    }
}

void QVLABTestManager::didUpdateTestResult(const std::string& /*testGuid*/, bool postNotification) {
    const auto self = shared_from_this();
    saveTestResults();
    if (postNotification) {
        QVLNotificationCenter::defaultCenter().post({.name = kQVLABTestManagerParticipatedNotification,
                                                     .sender = self,
                                                     .userInfo = {m_testResults.begin(), m_testResults.end()}});
    }
}

QVLHTTPRequest QVLABTestManager::generateABTestRequestWithURL(const QVLURL& url,
                                                              const std::optional<std::string>& guid) const {
    QVLHTTPRequest request{.url = url, .method = "POST"};
    if (const auto& token = m_account->userAuthToken()) {
        request.headers.push_back({"auth", *token});
    }
    if (const auto& userAgent = m_account->userAgent()) {
        request.headers.push_back({"User-Agent", *userAgent});
    }
    const QVLJSONWriteResult body = QVLJSONSerialization::dataWithJSONObject(
        QVLJSONDictionary{{"client", kClient},
                          {"version", m_environment->appVersion().value_or("")},
                          {"appType", m_environment->appType()},
                          {"deviceToken", m_environment->deviceToken().value_or("")},
                          {"testGuid", guid.value_or("")}});
    if (body) {
        request.body = body.text;
    }
    request.timeout = kRequestTimeout;
    // The credentials are this service's alone.
    request.followsRedirects = false;
    request.responseBodyLimit = kLongestReply;
    return request;
}

void QVLABTestManager::request(const QVLHTTPRequest& request, Completion completion) {
    const std::uint64_t number = m_nextRequest++;
    m_requests[number] = urlSession()->start(
        request, [weakSelf = weak_from_this(), number, completion = std::move(completion)](const QVLHTTPReply& reply) {
            const auto self = weakSelf.lock();
            if (!self) {
                return;
            }
            self->m_requests.erase(number);
            if (completion) {
                const Delivery delivery = deliveryFor(reply);
                completion(delivery.code, delivery.data, delivery.error);
            }
        });
}

const std::shared_ptr<QVLHTTPSession>& QVLABTestManager::urlSession() {
    if (!m_urlSession) {
        m_urlSession = m_platform->makeHTTPSession();
    }
    return m_urlSession;
}
