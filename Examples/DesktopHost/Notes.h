#pragma once

#include <string>
#include <vector>

/// What the application knows of its user and their work; its rules' inputs are made of this.
struct Notes {
    std::vector<std::string> texts;
    std::string plan = "free";
    int exportsThisMonth = 0;
    bool isPresenting = false;

    /// As they were saved in the application's directory.
    [[nodiscard]] static Notes load();
    void save() const;
};
