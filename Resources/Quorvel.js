// Quorvel 1.0.0
//
// The built-in rules script. It decides what the application shows its user, from the inputs that the application
// sets and from the journals of what the user has done. Documentation/WritingRules.md tells how to change it.

(function () {
    "use strict";

    const VERSION = "1.0.0"; // the same as in the first line of this file
    const MINIMUM_APP_VERSION = "4.1";
    const JOURNALS_VERSION = 1;
    const ALWAYS_USED_INPUTS = ["appVersion", "now"];
    const DAY = 24 * 60 * 60 * 1000; // moments are milliseconds since 1970

    // ---- Tables: what changes from one release or campaign to the next ----

    const TOUR = { newForDays: 14, showings: 3, manyDocuments: 5 };
    const RATING = { sessions: 10, daysBetween: 90 };
    const SURVEY = { name: "editor2026", percent: 10, sessions: 5, ends: "2027-01-15T00:00:00Z" };
    const RELEASES_WITH_NOTES = ["4.4", "4.2"]; // the newest first

    const PLANS = ["free", "personal", "team"];
    const UPGRADES = [
        { from: "free", to: "personal", exportPercent: 80, crowdInput: "deviceCount", crowd: 3 },
        { from: "personal", to: "team", exportPercent: 90, crowdInput: "collaboratorCount", crowd: 5 }
    ];
    const UPGRADE_REFUSAL = { days: 30, longestDays: 180 };

    // The worst level first. A dismissed warning stays away for the given days; a full storage cannot be dismissed.
    const STORAGE_LEVELS = [
        { level: "full", percent: 100, dismissedForDays: 0 },
        { level: "critical", percent: 95, dismissedForDays: 1 },
        { level: "low", percent: 80, dismissedForDays: 7 }
    ];

    const ANNOUNCEMENT = { name: "drawingTools", minimumAppVersion: "4.3",
                           starts: "2026-11-01T00:00:00Z", ends: "2026-12-01T00:00:00Z" };

    // ---- Rules: each looks at the facts and answers yes(value, why) or no(why). Tests of time come last. ----

    function firstRunTour(facts) {
        const created = facts.date("accountCreatedAt");
        if (created === null) return no("accountCreatedAt is missing");
        if (facts.event("tour.completed").happened) return no("the tour was completed");
        if (facts.isFlagged("tour.dismissed")) return no("the tour was dismissed");
        if (facts.event("tour.shown").count >= TOUR.showings) return no("the tour was shown often enough");
        if (facts.number("documentCount") >= TOUR.manyDocuments) return no("the user has made documents already");
        if (facts.endIfAhead(created, TOUR.newForDays) === null) return no("the account is not new");
        return yes(true, "the account is new", sessionEvent("tour", "offered"));
    }

    function ratingPrompt(facts) {
        if (facts.isFlagged("prompts.optedOut")) return no("the user opted out of prompts");
        if (facts.isFlagged("rating.refused")) return no("the user refused to rate");
        if (facts.event("rating.given").happened) return no("the user has rated");
        if (facts.event("session.started").count < RATING.sessions) return no("too few sessions");
        if (facts.number("syncErrorCount") > 0) return no("a user with sync errors is not asked");
        if (facts.isTrue("isOffline")) return no("rating needs a connection");
        if (facts.isTrue("isPresenting")) return no("the user is presenting");
        const until = facts.endIfAhead(facts.event("rating.promptShown").lastTime, RATING.daysBetween);
        if (until !== null) return no("asked lately; quiet until " + dateText(until));
        const event = sessionEvent("rating", "eligible", facts.text("appVersion"));
        return yes(true, "enough sessions and not asked lately", event);
    }

    function upgradeOffer(facts) {
        const plan = facts.text("plan");
        const upgrade = UPGRADES.find((candidate) => candidate.from === plan);
        if (upgrade === undefined) return no("no upgrade from this plan");
        if (facts.isTrue("isManagedAccount")) return no("an administrator chooses the plan");
        if (facts.isFlagged("prompts.optedOut")) return no("the user opted out of prompts");
        const exported = percentOf(facts.number("exportsThisMonth"), facts.number("exportLimitPerMonth"));
        const isCrowded = facts.number(upgrade.crowdInput) >= upgrade.crowd;
        if (exported < upgrade.exportPercent && !isCrowded) return no("the plan is large enough");
        const refused = facts.event("upgrade.offerRefused");
        const days = Math.min(UPGRADE_REFUSAL.days * Math.max(refused.count, 1), UPGRADE_REFUSAL.longestDays);
        const until = facts.endIfAhead(refused.lastTime, days);
        if (until !== null) return no("refused; quiet until " + dateText(until));
        const why = isCrowded ? upgrade.crowdInput + " is high" : "exports near the monthly limit";
        return yes(upgrade.to, why, sessionEvent("upgrade", "eligible", upgrade.to));
    }

    function storageWarning(facts) {
        const found = storageLevel(facts);
        if (found === undefined) return no("enough storage is free");
        const until = facts.endIfAhead(facts.event("storage.warningDismissed").lastTime, found.dismissedForDays);
        if (until !== null) return no(found.level + ", but dismissed until " + dateText(until));
        const why = found.percent + " percent or more is used";
        return yes(found.level, why, sessionEvent("storage", "warned", found.level));
    }

    function whatsNew(facts) {
        const running = facts.version("appVersion");
        if (running === null) return no("appVersion is missing");
        const release = RELEASES_WITH_NOTES.find((candidate) => compareVersions(versionOf(candidate), running) <= 0);
        if (release === undefined) return no("no notes for this version");
        const first = facts.version("firstInstalledVersion");
        if (first !== null && compareVersions(first, versionOf(release)) >= 0) return no("the user began with it");
        if (facts.event("whatsNew.shown." + release).happened) return no("the notes of " + release + " were shown");
        return yes(release, "the notes of " + release + " were not shown yet");
    }

    function announcement(facts) {
        const running = facts.version("appVersion");
        if (running === null) return no("appVersion is missing");
        if (compareVersions(running, versionOf(ANNOUNCEMENT.minimumAppVersion)) < 0) return no("needs a newer version");
        if (facts.isFlagged("prompts.optedOut")) return no("the user opted out of prompts");
        if (facts.isFlagged("announcement.dismissed." + ANNOUNCEMENT.name)) return no("dismissed");
        if (facts.number("drawingCount") === 0) return no("the user has no drawings");
        if (facts.isTrue("isPresenting")) return no("the user is presenting");
        if (facts.hasPassed(momentOf(ANNOUNCEMENT.ends))) return no("ended at " + ANNOUNCEMENT.ends);
        if (!facts.hasPassed(momentOf(ANNOUNCEMENT.starts))) return no("starts at " + ANNOUNCEMENT.starts);
        return yes(ANNOUNCEMENT.name, "runs until " + ANNOUNCEMENT.ends);
    }

    function survey(facts) {
        const userId = facts.text("userId");
        if (userId === "") return no("userId is missing");
        if (drawnPercent(userId, SURVEY.name) >= SURVEY.percent) return no("the user is not among those drawn");
        if (facts.isFlagged("prompts.optedOut")) return no("the user opted out of prompts");
        if (facts.isFlagged("survey.refused." + SURVEY.name)) return no("refused");
        if (facts.event("survey.answered." + SURVEY.name).happened) return no("answered");
        if (facts.event("session.started").count < SURVEY.sessions) return no("too few sessions");
        if (facts.isTrue("isOffline")) return no("the survey needs a connection");
        if (facts.hasPassed(momentOf(SURVEY.ends))) return no("ended at " + SURVEY.ends);
        return yes(SURVEY.name, "drawn; runs until " + SURVEY.ends, sessionEvent("survey", "drawn", SURVEY.name));
    }

    function analyticsDimensions(facts) {
        const sessions = facts.event("session.started").count;
        const plan = facts.text("plan");
        const storage = storageLevel(facts);
        const created = facts.date("accountCreatedAt");
        const isNew = created !== null && facts.endIfAhead(created, TOUR.newForDays) !== null;
        const user = {
            plan: PLANS.includes(plan) ? plan : "unknown",
            tenure: created === null ? "unknown" : isNew ? "new" : "settled",
            activity: sessions < 10 ? "rare" : sessions < 100 ? "regular" : "frequent",
            storage: storage === undefined ? "free" : storage.level
        };
        const app = { platform: facts.text("appPlatform"), locale: facts.text("appLocale") };
        return yes([analyticsEvent("dimensions", "user", null, user),
                    analyticsEvent("dimensions", "app", facts.text("appVersion"), app)], "always sent");
    }

    // One row per output. `inputs` is all that the rule may read, `otherwise` its value when it says no or fails.
    const RULES = [
        { name: "showFirstRunTour", decide: firstRunTour, otherwise: false,
          inputs: ["accountCreatedAt", "documentCount"] },
        { name: "showRatingPrompt", decide: ratingPrompt, otherwise: false,
          inputs: ["appVersion", "isOffline", "isPresenting", "syncErrorCount"] },
        { name: "upgradeOffer", decide: upgradeOffer, otherwise: "",
          inputs: ["collaboratorCount", "deviceCount", "exportLimitPerMonth", "exportsThisMonth", "isManagedAccount",
                   "plan"] },
        { name: "storageWarning", decide: storageWarning, otherwise: "",
          inputs: ["storageLimitBytes", "storageUsedBytes"] },
        { name: "whatsNewVersion", decide: whatsNew, otherwise: "", inputs: ["appVersion", "firstInstalledVersion"] },
        { name: "announcement", decide: announcement, otherwise: "",
          inputs: ["appVersion", "drawingCount", "isPresenting"] },
        { name: "survey", decide: survey, otherwise: "", inputs: ["isOffline", "userId"] },
        { name: "%googleAnalyticsDimensions", decide: analyticsDimensions, otherwise: [],
          inputs: ["accountCreatedAt", "appLocale", "appPlatform", "appVersion", "plan", "storageLimitBytes",
                   "storageUsedBytes"] }
    ];

    // ---- Words that rules are written with ----

    const yes = (value, why, event) => ({ value: value, why: why, event: event });
    const no = (why) => ({ why: why });

    function analyticsEvent(category, action, label, dimensions) {
        return { category: category, action: action, label: label, value: null, dimensions: dimensions };
    }

    // An event is sent again when any part of it changes, so give it nothing that differs from run to run.
    const sessionEvent = (category, action, label = null) => analyticsEvent(category, action, label, null);

    function storageLevel(facts) {
        const used = percentOf(facts.number("storageUsedBytes"), facts.number("storageLimitBytes"));
        return STORAGE_LEVELS.find((candidate) => used >= candidate.percent);
    }

    const percentOf = (part, whole) => whole > 0 ? part / whole * 100 : 0;

    // Where a user falls between 0 and 100 in the draw of the given name: always the same for one user and one name,
    // and unrelated between names. FNV-1a (32 bits, over UTF-16 code units) of "name:userId"; since its upper bits
    // hardly depend on the last characters, a final mixing (multiply and shift) spreads every bit over all others.
    function drawnPercent(userId, name) {
        const text = name + ":" + userId;
        let hash = 0x811c9dc5;
        for (let i = 0; i < text.length; i++) hash = Math.imul(hash ^ text.charCodeAt(i), 0x01000193);
        hash = Math.imul(hash ^ (hash >>> 16), 0x85ebca6b);
        hash = Math.imul(hash ^ (hash >>> 13), 0xc2b2ae35);
        return ((hash ^ (hash >>> 16)) >>> 0) / 0x100000000 * 100;
    }

    // The numbers of "4.4.2"; what follows them ("-beta", a build in brackets) is ignored. null if there are none.
    // The bounds keep the numbers exact and the match cheap.
    function versionOf(text) {
        const found = /^\d{1,15}(?:\.\d{1,15}){0,7}(?!\d)/.exec(text);
        return found === null ? null : found[0].split(".").map(Number);
    }

    // Number by number, so 4.10 is newer than 4.9; a missing number counts as 0, so 4 equals 4.0.
    function compareVersions(left, right) {
        for (let i = 0; i < Math.max(left.length, right.length); i++) {
            const a = i < left.length ? left[i] : 0;
            const b = i < right.length ? right[i] : 0;
            if (a !== b) return a < b ? -1 : 1;
        }
        return 0;
    }

    // The moment of a date such as 2021-03-04T05:06:07Z or with an offset such as +02:00; null for anything else, so
    // that 30 February or 24:00 does not silently become another day.
    function momentOf(text) {
        const form = /^(\d{4})-(\d\d)-(\d\d)T(\d\d):(\d\d):(\d\d)(?:Z|([+-])([01]\d|2[0-3]):([0-5]\d))$/;
        const found = typeof text === "string" ? form.exec(text) : null;
        if (found === null) return null;
        const n = found.map(Number);
        const local = Date.UTC(n[1], n[2] - 1, n[3], n[4], n[5], n[6]);
        if (dateText(local).slice(0, 19) !== text.slice(0, 19)) return null;
        const offset = found[7] === undefined ? 0 : (n[8] * 60 + n[9]) * 60000;
        return found[7] === "-" ? local + offset : local - offset;
    }

    const dateText = (moment) => new Date(moment).toISOString().replace(".000Z", "Z");
    const isObject = (value) => typeof value === "object" && value !== null && !Array.isArray(value);

    // Only own members count: a key such as "constructor" must not find what every object inherits.
    function member(object, key) {
        return isObject(object) && Object.prototype.hasOwnProperty.call(object, key) ? object[key] : undefined;
    }

    const isTruth = (value) => value === true || (typeof value === "number" && value !== 0);
    const amount = (value) => typeof value === "number" && Number.isFinite(value) && value > 0 ? value : 0;

    // ---- Facts: all that a rule may ask, each question noted for the bookkeeping keys ----

    class Facts {
        constructor(rule, world) {
            this.rule = rule;
            this.world = world;
            this.undeclared = new Set();
        }

        input(name) {
            if (!this.rule.inputs.includes(name)) this.undeclared.add(name);
            this.world.usedInputs.add(name);
            return member(this.world.inputs, name);
        }

        // A missing input, or one of the wrong type, reads as "", 0, false or null: never as a converted value.
        text(name) { const value = this.input(name); return typeof value === "string" ? value : ""; }
        number(name) { return amount(this.input(name)); }
        isTrue(name) { return isTruth(this.input(name)); }
        date(name) { return momentOf(this.input(name)); }
        version(name) { return versionOf(this.text(name)); }

        event(key) {
            const record = member(this.world.events, key);
            const count = amount(member(record, "count"));
            const lastTime = momentOf(member(record, "lastTime"));
            return { count: count, firstTime: momentOf(member(record, "firstTime")), lastTime: lastTime,
                     happened: count > 0 || lastTime !== null };
        }

        isFlagged(key) { return isTruth(member(member(this.world.flags, key), "flag")); }

        // Every moment found to lie ahead may change the answer, so the earliest becomes "%timeToNextTrigger".
        hasPassed(moment) {
            if (moment === null) throw new Error("hasPassed needs a date");
            if (this.world.now < moment) this.world.momentsAhead.push(moment);
            return this.world.now >= moment;
        }

        // The moment so many days after start, or null once it has passed (or without a start). A start that lies
        // ahead, left by a clock that was wrong, counts as now: what it holds back stays back until the clock agrees.
        endIfAhead(start, days) {
            if (start === null) return null;
            const end = Math.min(start, this.world.now) + days * DAY;
            return this.hasPassed(end) ? null : end;
        }
    }

    // ---- Running the rules ----

    // A rule that throws, or answers what JSON cannot hold, gives its `otherwise` and leaves the other rules alone.
    function runRule(rule, world) {
        const facts = new Facts(rule, world);
        try {
            const answer = rule.decide(facts);
            const value = asJSON(answer.value === undefined ? rule.otherwise : answer.value);
            const undeclared = Array.from(facts.undeclared).join(", ");
            const why = String(answer.why) + (undeclared === "" ? "" : " (undeclared inputs: " + undeclared + ")");
            if (answer.event !== undefined) world.sessionEvents.push(asJSON(answer.event));
            return { value: value, why: why };
        } catch (error) {
            world.failureAreas.push(rule.name);
            const message = error instanceof Error ? error.message : "unknown error";
            return { value: rule.otherwise, why: "failed: " + message };
        }
    }

    const asJSON = (value) => JSON.parse(JSON.stringify(value));

    // A host that gives no version, or one that is no version, counts as supported: refusing it would take every rule
    // away for want of one input, and rules that depend on the version stay silent by themselves.
    function isSupported(inputs) {
        const version = member(inputs, "appVersion");
        const running = typeof version === "string" ? versionOf(version) : null;
        return running === null || compareVersions(running, versionOf(MINIMUM_APP_VERSION)) >= 0;
    }

    // The parser's own message would put a piece of the user's data into a log.
    function parsedObject(text, what) {
        let value;
        try {
            value = JSON.parse(text);
        } catch (error) {
            throw new Error("the " + what + " are not JSON");
        }
        if (!isObject(value)) throw new Error("the " + what + " are not an object");
        return value;
    }

    function worldOf(inputsText, journalsText) {
        const inputs = parsedObject(inputsText, "inputs");
        const journals = parsedObject(journalsText, "journals");
        const version = member(journals, "__version__");
        if (version !== undefined && version !== JOURNALS_VERSION) throw new Error("unknown version of the journals");
        const now = momentOf(member(inputs, "now"));
        return {
            inputs: inputs, events: member(journals, "events"), flags: member(journals, "flags"),
            now: now === null ? Date.now() : now,
            usedInputs: declaredInputs(), momentsAhead: [], failureAreas: [], sessionEvents: []
        };
    }

    function declaredInputs() {
        return new Set(RULES.reduce((names, rule) => names.concat(rule.inputs), ALWAYS_USED_INPUTS));
    }

    function answerOf(world) {
        const answer = { "%version": VERSION, "%isCurrentAppSupported": isSupported(world.inputs), ruleReasons: {} };
        for (const rule of RULES) {
            const result = runRule(rule, world);
            answer[rule.name] = result.value;
            answer.ruleReasons[rule.name] = result.why;
        }
        answer["%usedInputs"] = Array.from(world.usedInputs).sort();
        answer["%failureAreas"] = world.failureAreas;
        answer["%googleAnalyticsSessionEvents"] = world.sessionEvents;
        if (world.momentsAhead.length > 0) {
            const next = world.momentsAhead.reduce((a, b) => Math.min(a, b));
            answer["%timeToNextTrigger"] = Math.ceil((next - world.now) / 1000);
        }
        return answer;
    }

    quorvel.process = function (inputsText, journalsText) {
        try {
            return JSON.stringify(answerOf(worldOf(inputsText, journalsText)));
        } catch (error) {
            return JSON.stringify({ "%error": error.message, "%version": VERSION, "%isCurrentAppSupported": true,
                                    "%usedInputs": Array.from(declaredInputs()).sort(), "%failureAreas": [] });
        }
    };
}());
