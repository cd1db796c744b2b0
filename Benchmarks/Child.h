#pragma once

#include "Workload.h"

#include <string>
#include <vector>

/// A program beside the benchmarks that starts from files, as a host does.
enum class Program { Bare, Engine };

/// Runs the program to its end and gives what it has said on standard output.
[[nodiscard]] std::string outputOf(Program program, const std::vector<std::string>& arguments);

/// Leaves in the directory what a host finds at its start: an answer to the inputs' variation 0, the journals, the
/// script, and variation 1 of the inputs.
void writeHostFiles(const Workload& workload, const std::string& directory);
