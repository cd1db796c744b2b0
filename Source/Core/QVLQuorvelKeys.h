#pragma once

// Names that hosts and rules scripts share with the engine.

// Files in the engine's directory.
inline constexpr const char* kQVLOutputsCacheFile = "OutputsCache.json";
inline constexpr const char* kQVLJournalsFile = "Journals.json";

// User-defaults keys.
inline constexpr const char* kQVLDisableQuorvelUserDefaultsKey = "QVLDisableQuorvel";
inline constexpr const char* kQVLInputOverrideDefaultsPrefix = "QVLQuorvelOverride.input.";
inline constexpr const char* kQVLOutputOverrideDefaultsPrefix = "QVLQuorvelOverride.output.";

// Notifications; the sender is the engine.
/// The engine was started.
inline constexpr const char* kQVLQuorvelDidStartNotification = "QVLQuorvelDidStartNotification";
/// `scriptAvailability` changed.
inline constexpr const char* kQVLQuorvelScriptAvailabilityDidChangeNotification =
    "QVLQuorvelScriptAvailabilityDidChangeNotification";
/// Merged inputs changed.
inline constexpr const char* kQVLInputsDidChangeNotification = "QVLInputsDidChangeNotification";
/// Outputs changed; the user info holds the changed keys under `kQVLChangedOutputKeys`.
inline constexpr const char* kQVLOutputsDidChangeNotification = "QVLOutputsDidChangeNotification";
/// A journal record changed; the file is saved already.
inline constexpr const char* kQVLJournalsDidChangeNotification = "QVLJournalsDidChangeNotification";
/// Analytics events for the host to send on; the user info holds them under `kQVLGoogleAnalyticsEventsUserInfoKey`.
inline constexpr const char* kQVLGoogleAnalyticsEventsDidOccurNotification =
    "QVLGoogleAnalyticsEventsDidOccurNotification";

/// `std::vector<std::string>`, in no defined order.
inline constexpr const char* kQVLChangedOutputKeys = "QVLChangedOutputKeys";
/// `std::vector<std::shared_ptr<QVLAnalyticsEventInternal>>`.
inline constexpr const char* kQVLGoogleAnalyticsEventsUserInfoKey = "QVLGoogleAnalyticsEventsUserInfoKey";

// Bookkeeping keys of a script's answer.
/// Present when the run failed; a message.
inline constexpr const char* kQVLScriptErrorKey = "%error";
/// The script's version.
inline constexpr const char* kQVLScriptVersionKey = "%version";
/// Seconds after which the answer may change by itself; for hosts, the engine schedules nothing from it.
inline constexpr const char* kQVLScriptTimeToNextTriggerKey = "%timeToNextTrigger";
/// Whether the script has rules for this host version.
inline constexpr const char* kQVLScriptIsCurrentAppSupportedKey = "%isCurrentAppSupported";
/// Events to be read by the host as extra dimensions.
inline constexpr const char* kQVLScriptGoogleAnalyticsDimensionsKey = "%googleAnalyticsDimensions";
/// Events to be posted once a day.
inline constexpr const char* kQVLScriptGoogleAnalyticsSessionEventsKey = "%googleAnalyticsSessionEvents";
/// The names of the inputs that the rules read.
inline constexpr const char* kQVLScriptUsedInputs = "%usedInputs";
/// What failed in a run that gave outputs all the same.
inline constexpr const char* kQVLScriptFailureAreas = "%failureAreas";

// Status events: their category, and the actions that tell how a load or run ended.
inline constexpr const char* kQVLEventLoadCategory = "qvl_load";
inline constexpr const char* kQVLEventLoadStatusNotFound = "not_found";
inline constexpr const char* kQVLEventLoadStatusNotInstalled = "not_installed";
inline constexpr const char* kQVLEventLoadStatusNotSupported = "not_supported";
inline constexpr const char* kQVLEventLoadStatusBadResponse = "bad_response";
inline constexpr const char* kQVLEventLoadStatusRuntimeError = "runtime_error";
/// The name is misspelt for good: hosts refer to it.
inline constexpr const char* kQVLEventRunStatusSuceeded = "run_succeeded";
inline constexpr const char* kQVLEventRunStatusSomeErrors = "run_with_errors";
