#include "TemporaryDirectory.h"

#include <cstdlib>

namespace {

/// Gives the tests a configuration directory of their own before anything can look for one, so that neither finds what
/// the other keeps.
class ConfigurationForTests final {
public:
    ConfigurationForTests() { ::setenv("XDG_CONFIG_HOME", m_directory.path().c_str(), /*overwrite=*/1); }

private:
    TemporaryDirectory m_directory;
};

const ConfigurationForTests kConfigurationForTests;

} // namespace
