#include "QVLNotificationCenter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

class NotificationCenter : public testing::Test {
protected:
    /// An observer that adds its word to the calls.
    QVLNotificationCenter::Observer saying(const std::string& word) {
        return [this, word](const QVLNotification&) { m_calls += word + " "; };
    }
    void post(const std::string& name, const std::shared_ptr<const void>& sender = nullptr) {
        m_center->post({name, sender, {}});
    }
    std::string takeCalls() { return std::exchange(m_calls, {}); }

    std::unique_ptr<QVLNotificationCenter> m_center = std::make_unique<QVLNotificationCenter>();
    std::string m_calls;
};

TEST_F(NotificationCenter, CallsObserversOfTheNameInTheOrderOfRegistration) {
    QVLToken first = m_center->addObserver("a", saying("first"));
    const QVLToken other = m_center->addObserver("b", saying("other"));
    const QVLToken second = m_center->addObserver("a", saying("second"));
    post("a");
    EXPECT_EQ(takeCalls(), "first second ");
    first.reset();
    post("a");
    post("c");
    EXPECT_EQ(takeCalls(), "second ");
}

TEST_F(NotificationCenter, TellsSendersApartByIdentityEvenAfterTheirDeath) {
    auto sender = std::make_shared<int>(1);
    const auto equalSender = std::make_shared<int>(1);
    const QVLToken token = m_center->addObserver("a", sender, saying("called"));
    post("a", equalSender);
    post("a");
    EXPECT_EQ(takeCalls(), "");
    post("a", sender);
    EXPECT_EQ(takeCalls(), "called ");

    const std::weak_ptr<int> watched = sender;
    sender.reset();
    EXPECT_TRUE(watched.expired());
    // Some of these may well stand where the dead sender stood.
    std::vector<std::shared_ptr<int>> others;
    for (int count = 0; count < 100; ++count) {
        others.push_back(std::make_shared<int>(1));
        post("a", others.back());
    }
    EXPECT_EQ(takeCalls(), "");
}

TEST_F(NotificationCenter, HandsOverWhatTheSenderAdds) {
    const auto sender = std::make_shared<int>(1);
    std::vector<std::string> keys;
    const QVLToken token = m_center->addObserver("a", [&](const QVLNotification& notification) {
        EXPECT_EQ(notification.sender, sender);
        EXPECT_EQ(notification.value<int>("keys"), nullptr);
        EXPECT_EQ(notification.value<std::vector<std::string>>("absent"), nullptr);
        keys = *notification.value<std::vector<std::string>>("keys");
    });
    m_center->post({"a", sender, {{"keys", std::vector<std::string>{"k"}}}});
    EXPECT_EQ(keys, std::vector<std::string>{"k"});
}

TEST_F(NotificationCenter, AnObserverRemovedWhilePostingIsNotCalledAndOneAddedIsCalledByTheNextPost) {
    QVLToken added;
    QVLToken second;
    QVLToken first = m_center->addObserver("a", [&](const QVLNotification&) {
        m_calls += "first ";
        first.reset();
        second.reset();
        added = m_center->addObserver("a", saying("added"));
    });
    second = m_center->addObserver("a", saying("second"));
    const QVLToken third = m_center->addObserver("a", saying("third"));
    post("a");
    EXPECT_EQ(takeCalls(), "first third ");
    post("a");
    EXPECT_EQ(takeCalls(), "third added ");
}

TEST_F(NotificationCenter, TokensMayOutliveTheCenterWhichMayGoWhilePosting) {
    const QVLToken inner = m_center->addObserver("b", saying("inner"));
    const QVLToken dropping = m_center->addObserver("a", [&](const QVLNotification&) {
        post("b");
        m_center.reset();
    });
    QVLToken last = m_center->addObserver("a", saying("last"));
    post("a");
    EXPECT_EQ(takeCalls(), "inner last ");
    EXPECT_EQ(m_center, nullptr);
    last.reset();
}

TEST_F(NotificationCenter, ObserversComeAndGoOnAnyThread) {
    std::thread other([this] {
        for (int count = 0; count < 500; ++count) {
            const QVLToken token = m_center->addObserver("b", [](const QVLNotification&) {});
        }
    });
    const QVLToken token = m_center->addObserver("a", saying("x"));
    for (int count = 0; count < 500; ++count) {
        post("a");
    }
    other.join();
    EXPECT_EQ(m_calls.size(), 1000U);
}

} // namespace
