#include "Rules.h"

Rules::Rules(Notes& notes, PromptBar& bar)
    : m_notes(notes),
      m_bar(bar),
      m_engine(QVLQuorvelEnvironment::sharedEnvironment()->quorvelForPreLogin()),
      m_inputs(std::make_shared<InputsManager>(m_engine, notes)) {}

Rules::~Rules() {
    m_engine->stop();
}

void Rules::start() {
    m_observation = QVLNotificationCenter::defaultCenter().addObserver(
        kQVLOutputsDidChangeNotification, m_engine, [this](const QVLNotification&) { showWhatOutputsAsk(); });
    m_engine->start();
    m_inputs->updateInputsNow();
    record("session.started");
    // What the last session left behind is there at once, and nothing announces it.
    showWhatOutputsAsk();
}

bool Rules::isOn(const char* output) const {
    const auto found = m_engine->outputForKey(output);
    return found && found->boolValue();
}

std::string Rules::textOf(const char* output) const {
    const auto found = m_engine->outputForKey(output);
    return found ? found->stringValue().value_or("") : "";
}

std::function<void()> Rules::event(const std::string& key) {
    return [this, key] { record(key); };
}

std::function<void()> Rules::flag(const std::string& key) {
    return [this, key] { m_engine->journals()->flagForKey(key)->updateFlag(true); };
}

std::optional<PromptBar::Prompt> Rules::tour() {
    if (!isOn("showFirstRunTour")) {
        return std::nullopt;
    }
    return PromptBar::Prompt{"Welcome! Take a tour of your new notebook?",
                             "tour.shown",
                             "Take the Tour",
                             "No Thanks",
                             event("tour.completed"),
                             flag("tour.dismissed")};
}

std::optional<PromptBar::Prompt> Rules::storageBanner() {
    const std::string level = textOf("storageWarning");
    if (level.empty() || m_isStorageLeftForLater) {
        return std::nullopt;
    }
    return PromptBar::Prompt{
        QString::fromStdString("Storage is " + level + "."), "storage.warningShown",           "Later", "Dismiss",
        [this] { m_isStorageLeftForLater = true; },          event("storage.warningDismissed")};
}

std::optional<PromptBar::Prompt> Rules::newsBanner() {
    const std::string version = textOf("whatsNewVersion");
    if (version.empty()) {
        return std::nullopt;
    }
    return PromptBar::Prompt{QString::fromStdString("New in version " + version + ": folders that share themselves."),
                             "whatsNew.shown." + version,
                             "Read More",
                             "Close",
                             [] {},
                             [] {}};
}

std::optional<PromptBar::Prompt> Rules::upgradeOffer() {
    const std::string plan = textOf("upgradeOffer");
    if (plan.empty()) {
        return std::nullopt;
    }
    return PromptBar::Prompt{QString::fromStdString("Your exports are nearly used up. Move to the " + plan + " plan?"),
                             "upgrade.offerShown",
                             "Upgrade",
                             "Not Now",
                             [this, plan] {
                                 record("upgrade.offerAccepted");
                                 m_notes.plan = plan;
                                 m_notes.save();
                                 stateChanged();
                             },
                             event("upgrade.offerRefused")};
}

std::optional<PromptBar::Prompt> Rules::ratingPrompt() {
    if (!isOn("showRatingPrompt")) {
        return std::nullopt;
    }
    return PromptBar::Prompt{"Do you like this notebook?", "rating.promptShown",  "Rate It", "Never Ask",
                             event("rating.given"),        flag("rating.refused")};
}

void Rules::showWhatOutputsAsk() {
    // That it was shown may already be a reason not to show it again: what is on screen stays until it is answered.
    if (!m_bar.isHidden()) {
        return;
    }
    for (const auto ask :
         {&Rules::tour, &Rules::storageBanner, &Rules::newsBanner, &Rules::upgradeOffer, &Rules::ratingPrompt}) {
        if (const std::optional<PromptBar::Prompt> prompt = (this->*ask)()) {
            m_bar.show(*prompt);
            record(prompt->shownEvent);
            return;
        }
    }
}
