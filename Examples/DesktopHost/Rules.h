#pragma once

#include "InputsManager.h"
#include "PromptBar.h"

#include <optional>

/// The application's side of the rules: records what its user does, and turns outputs into prompts.
class Rules final {
public:
    /// Shows prompts in the bar; it and the notes outlive this.
    Rules(Notes& notes, PromptBar& bar);
    ~Rules();

    void start();
    /// The application's state changed.
    void stateChanged() { m_inputs->updateInputsNow(); }
    void record(const std::string& event) { m_engine->journals()->eventForKey(event)->trigger(); }

    [[nodiscard]] const std::shared_ptr<QVLQuorvel>& engine() const { return m_engine; }
    [[nodiscard]] const std::shared_ptr<InputsManager>& inputs() const { return m_inputs; }

private:
    void showWhatOutputsAsk();
    [[nodiscard]] std::optional<PromptBar::Prompt> tour();
    [[nodiscard]] std::optional<PromptBar::Prompt> storageBanner();
    [[nodiscard]] std::optional<PromptBar::Prompt> newsBanner();
    [[nodiscard]] std::optional<PromptBar::Prompt> upgradeOffer();
    [[nodiscard]] std::optional<PromptBar::Prompt> ratingPrompt();
    [[nodiscard]] bool isOn(const char* output) const;
    [[nodiscard]] std::string textOf(const char* output) const;
    [[nodiscard]] std::function<void()> event(const std::string& key);
    [[nodiscard]] std::function<void()> flag(const std::string& key);

    Notes& m_notes;
    PromptBar& m_bar;
    bool m_isStorageLeftForLater = false;
    const std::shared_ptr<QVLQuorvel> m_engine;
    const std::shared_ptr<InputsManager> m_inputs;
    QVLToken m_observation;
};
