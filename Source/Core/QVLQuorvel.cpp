#include "QVLQuorvel.h"

#include "QVLABTestManager.h"
#include "QVLLogMacros.h"
#include "QVLScriptManager.h"
#include "QVLScriptRunner.h"

// The engine's life, and what the host sets and reads. Its files, its reactions to changes and its script have sources
// of their own.

namespace {

constexpr QVLTimeInterval kInitialScriptFetchTimeout(2.0);

std::vector<std::string> unionOf(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    std::set<std::string> keys(a.begin(), a.end());
    keys.insert(b.begin(), b.end());
    return {keys.begin(), keys.end()};
}

} // namespace

std::shared_ptr<QVLQuorvel> QVLQuorvel::initWithDirectory(const std::string& directory,
                                                          const std::shared_ptr<QVLScriptManager>& scriptManager,
                                                          const std::shared_ptr<QVLABTestManager>& abtestManager) {
    std::shared_ptr<QVLQuorvel> engine(new QVLQuorvel(directory, scriptManager, abtestManager), destroyOnMainThread);
    engine->setUp();
    return engine;
}

// The run loop is asked of the engine, not kept beside it: what waits in the run loop may be all that still refers to
// an ended engine, and each would keep the other.
void QVLQuorvel::destroyOnMainThread(QVLQuorvel* engine) {
    const std::shared_ptr<QVLMainRunLoop> mainRunLoop = engine->m_platform->mainRunLoop;
    if (mainRunLoop->isMainThread()) {
        delete engine;
    } else {
        mainRunLoop->post([engine] { delete engine; });
    }
}

QVLQuorvel::QVLQuorvel(std::string directory, std::shared_ptr<QVLScriptManager> scriptManager,
                       std::shared_ptr<QVLABTestManager> abtestManager)
    : m_platform(QVLPlatform::current()),
      m_contentDirectory(std::move(directory)),
      m_scriptManager(std::move(scriptManager)),
      m_abtestManager(std::move(abtestManager)) {}

void QVLQuorvel::setUp() {
    const std::shared_ptr<QVLQuorvel> self = shared_from_this();
    const bool isDisabled = m_platform->userDefaults->boolForKey(kQVLDisableQuorvelUserDefaultsKey);
    m_abtestOutputsCollection = QVLPropertyCollection::init();
    m_abtestOutputsCollection->setPretendIsEmpty(isDisabled);
    updateABTestResults();
    m_abtestOutputsCollection->setDelegate(self);

    m_inputsCollection = QVLPropertyCollection::init();
    m_inputsCollection->setDelegate(self);
    m_inputsCollection->setOverrideDefaultsPrefix(kQVLInputOverrideDefaultsPrefix);

    m_outputsCollection = QVLPropertyCollection::init();
    m_outputsCollection->setCollection(loadOutputsCache());
    m_outputsCollection->setPretendIsEmpty(isDisabled);
    m_outputsCollection->setDelegate(self);
    m_outputsCollection->setOverrideDefaultsPrefix(kQVLOutputOverrideDefaultsPrefix);

    m_journals = loadJournals();
    m_journals->setDelegate(self);

    m_qvlQueue = m_platform->makeSerialQueue(className());
    m_runner = std::make_shared<QVLScriptRunner>(m_platform, self, m_inputsCollection, m_journals);
    observeManagers();
}

QVLQuorvel::~QVLQuorvel() {
    if (m_runner) {
        m_runner->abandon();
    }
    if (m_abtestManager) {
        m_abtestManager->tearDown();
    }
    m_observations.clear();
    if (m_runner && m_runner->hasMadeContext()) {
        // The machine ends on the queue that used it.
        m_qvlQueue->async([runner = std::move(m_runner)] {});
    }
}

void QVLQuorvel::observeManagers() {
    QVLNotificationCenter& center = QVLNotificationCenter::defaultCenter();
    const auto call = [weak = weak_from_this()](void (QVLQuorvel::*operation)()) {
        return [weak, operation](const QVLNotification&) {
            if (const auto self = weak.lock()) {
                (self.get()->*operation)();
            }
        };
    };
    if (m_scriptManager) {
        m_observations.push_back(center.addObserver(kQVLScriptManagerCurrentScriptNeedsReloadNotification,
                                                    m_scriptManager, call(&QVLQuorvel::scriptNeedsReload)));
    }
    if (m_abtestManager) {
        m_observations.push_back(center.addObserver(kQVLABTestManagerParticipatedNotification, m_abtestManager,
                                                    call(&QVLQuorvel::updateABTestResults)));
    }
}

void QVLQuorvel::start() {
    QVL_ASSERT_MAIN_THREAD(this);
    // Whoever is told of something below may release the engine.
    const std::shared_ptr<QVLQuorvel> self = shared_from_this();
    m_runner->setStarted(true);
    for (const auto step : {&QVLQuorvel::awaitFirstScript, &QVLQuorvel::startFetching,
                            &QVLQuorvel::scheduleResetSentEvents, &QVLQuorvel::postDidStart}) {
        // Whoever is told of something on the way may also stop the engine.
        if (m_runner->isStarted()) {
            (this->*step)();
        }
    }
}

void QVLQuorvel::awaitFirstScript() {
    if (m_scriptManager && m_scriptManager->currentScript()) {
        return;
    }
    setScriptAvailability(QVLScriptAvailabilityPending);
    if (!m_runner->isStarted()) {
        return;
    }
    m_initialScriptFetchTimeout =
        m_platform->mainRunLoop->performAfterDelay(kInitialScriptFetchTimeout, [weak = weak_from_this()] {
            if (const auto engine = weak.lock()) {
                engine->initialScriptFetchTimeout();
            }
        });
}

void QVLQuorvel::startFetching() {
    if (!m_scriptManager) {
        return;
    }
    if (!isPreLogin()) {
        m_scriptManager->fetchScriptsNow();
    }
    if (m_runner->isStarted()) {
        m_scriptManager->startScriptFetching();
    }
}

void QVLQuorvel::postDidStart() {
    post(kQVLQuorvelDidStartNotification);
}

void QVLQuorvel::stop() {
    QVL_ASSERT_MAIN_THREAD(this);
    m_runner->setStarted(false);
    if (m_scriptManager) {
        m_scriptManager->stopScriptFetching();
    }
    m_initialScriptFetchTimeout.reset();
    m_resetSentEvents.reset();
}

void QVLQuorvel::fetchScriptNow() {
    const std::shared_ptr<QVLQuorvel> self = shared_from_this();
    if (m_scriptManager) {
        m_scriptManager->fetchScriptsNow();
    }
}

void QVLQuorvel::initialScriptFetchTimeout() {
    setScriptAvailability(QVLScriptAvailabilityUnavailable);
}

void QVLQuorvel::setScriptAvailability(QVLScriptAvailability availability) {
    if (availability == m_scriptAvailability) {
        return;
    }
    m_scriptAvailability = availability;
    m_initialScriptFetchTimeout.reset();
    post(kQVLQuorvelScriptAvailabilityDidChangeNotification);
}

QVLJSONDictionary QVLQuorvel::inputs() const {
    return m_inputsCollection->collection();
}

void QVLQuorvel::setInputs(const QVLJSONDictionary& inputs) {
    const std::shared_ptr<QVLQuorvel> self = shared_from_this();
    m_inputsCollection->setCollection(inputs);
    scheduleEvaluateRules();
}

QVLJSONDictionary QVLQuorvel::inputsOverrides() const {
    return m_inputsCollection->collectionOverrides();
}

void QVLQuorvel::setInputsOverrides(const QVLJSONDictionary& overrides) {
    const std::shared_ptr<QVLQuorvel> self = shared_from_this();
    m_inputsCollection->setCollectionOverrides(overrides);
    scheduleEvaluateRules();
}

std::vector<std::string> QVLQuorvel::inputKeys() const {
    return m_inputsCollection->collectionKeys();
}

QVLJSONValue QVLQuorvel::inputForKey(std::string_view key) const {
    return m_inputsCollection->mergedValueForKey(key);
}

QVLJSONDictionary QVLQuorvel::outputs() const {
    return QVLJSONDictionary::merged(m_outputsCollection->collection(), m_abtestOutputsCollection->collection());
}

QVLJSONDictionary QVLQuorvel::outputsOverrides() const {
    return m_outputsCollection->collectionOverrides();
}

void QVLQuorvel::setOutputsOverrides(const QVLJSONDictionary& overrides) {
    m_outputsCollection->setCollectionOverrides(overrides);
}

std::vector<std::string> QVLQuorvel::outputKeys() const {
    std::vector<std::string> keys = m_outputsCollection->collectionKeys();
    std::erase_if(keys, [](const std::string& key) { return key.starts_with('%'); });
    return unionOf(keys, m_abtestOutputsCollection->collectionKeys());
}

std::shared_ptr<QVLOutput> QVLQuorvel::outputForKey(std::string_view key) const {
    QVLJSONValue value = m_outputsCollection->mergedValueForKey(key);
    if (value.isNothing()) {
        value = m_abtestOutputsCollection->mergedValueForKey(key);
    }
    return value.isNothing() ? nullptr : QVLOutput::initWithQVLJSONObject(value);
}

bool QVLQuorvel::disableOutputs() const {
    return m_outputsCollection->pretendIsEmpty() && m_abtestOutputsCollection->pretendIsEmpty();
}

void QVLQuorvel::setDisableOutputs(bool disable) {
    const std::shared_ptr<QVLQuorvel> self = shared_from_this();
    m_outputsCollection->setPretendIsEmpty(disable);
    m_abtestOutputsCollection->setPretendIsEmpty(disable);
}

void QVLQuorvel::resetJournals() {
    m_journals->reset();
}
