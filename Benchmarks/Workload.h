#pragma once

#include "QVLJSONDictionary.h"

#include <cstddef>
#include <string>

/// What one engine has to deal with, made from a seed: the same sizes give the same workload on every machine.
struct Workload {
    std::size_t inputCount = 60;
    std::size_t recordCount = 500;
    std::size_t ruleCount = 150;

    /// Inputs of every kind. Those of two consecutive variations differ in one value, which the script answers.
    [[nodiscard]] QVLJSONDictionary inputs(std::size_t variation) const;
    /// The journals file: nine events to one flag.
    [[nodiscard]] std::string journalsText() const;
    /// A rules script of small functions, as authors write them: each looks at some inputs and events and answers, or
    /// gives a reason why not. One output repeats "variation", another the count of the event "benchmarked".
    [[nodiscard]] std::string script() const;
};
