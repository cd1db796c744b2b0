#include "QVLQuorvelKeys.h"
#include "TemporaryDirectory.h"
#include "Victim.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>

namespace {

int roundCount() {
    const char* const wanted = std::getenv("QVL_KILL_ROUNDS");
    return wanted ? std::atoi(wanted) : 20;
}

TEST(Kill, AtAnyMomentLeavesFilesThatLoadAndLosesNoChangeThatWasTold) {
    const TemporaryDirectory directory;
    std::mt19937 random(20261122); // NOLINT(cert-msc32-c): the same rounds every time
    std::uint64_t told = 0;
    for (int round = 0; round < roundCount(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Victim victim(directory.path());
        victim.hear(1 + random() % 400);
        victim.kill();
        told = std::max(told, victim.lastCount());
        EXPECT_GE(Victim::savedCount(directory.path()), told);
        // Each removes what the one before it left.
        const std::filesystem::directory_iterator items(directory.path("quorvel"));
        const auto aside = std::count_if(begin(items), end(items), [](const auto& item) {
            return item.path().filename().string().starts_with(".quorvel-");
        });
        EXPECT_LE(aside, 2) << "one for each file that was being written";
    }
    EXPECT_GT(told, 0U);
}

} // namespace
