#pragma once

// Everything that a host needs.

#include "QVLABTestManager.h"
#include "QVLAccount.h"
#include "QVLAnalyticsEvent.h"
#include "QVLJSONSerialization.h"
#include "QVLJournals.h"
#include "QVLLogging.h"
#include "QVLMainRunLoop.h"
#include "QVLNotificationCenter.h"
#include "QVLOutput.h"
#include "QVLQuorvel.h"
#include "QVLQuorvelEnvironment.h"
#include "QVLReachability.h"
#include "QVLScript.h"
#include "QVLScriptManager.h"
#include "QVLScriptObject.h"
#include "QVLUserDefaults.h"

/// Version of the library: its number, and a text for people.
extern "C" QVL_EXPORT const double QuorvelVersionNumber;
extern "C" QVL_EXPORT const char QuorvelVersionString[];
