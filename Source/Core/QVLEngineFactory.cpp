#include "QVLABTestManager.h"
#include "QVLQuorvel.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLScriptManager.h"

// The environment's factory of engines. A source of its own, so that the rest of the environment does not know the
// engine.

std::shared_ptr<QVLQuorvel> QVLQuorvelEnvironment::quorvelWithAccount(const std::shared_ptr<QVLAccount>& account) {
    const auto scriptManager = QVLScriptManager::initWithEnvironment(shared_from_this());
    const auto abtestManager = QVLABTestManager::initWithEnvironment(shared_from_this(), account);
    return QVLQuorvel::initWithDirectory(account ? account->accountDirectory() : std::string(), scriptManager,
                                         abtestManager);
}

std::shared_ptr<QVLQuorvel> QVLQuorvelEnvironment::quorvelForPreLogin() {
    if (!m_quorvelForPreLogin) {
        const auto scriptManager = QVLScriptManager::initWithEnvironment(shared_from_this());
        m_quorvelForPreLogin =
            QVLQuorvel::initWithDirectory(applicationSupportDirectory().value_or(""), scriptManager, nullptr);
        m_quorvelForPreLogin->setPreLogin();
    }
    return m_quorvelForPreLogin;
}

void QVLQuorvelEnvironment::setQuorvelForPreLogin(std::shared_ptr<QVLQuorvel> quorvel) {
    m_quorvelForPreLogin = std::move(quorvel);
}
