#include "BareScript.h"
#include "EngineUnderLoad.h"
#include "Measurement.h"
#include "QVLDateFormatter.h"
#include "QVLJSONSerialization.h"
#include "QVLPropertyCollection.h"
#include "TemporaryDirectory.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <ctime>
#include <map>

// The single pieces of an evaluation, each against the plainest code that does the like.

namespace {

using TextMap = std::map<std::string, std::string>;

TextMap textMap(const QVLJSONDictionary& dictionary) {
    TextMap map;
    for (const auto& [key, value] : dictionary) {
        map[key.text()] = value.description();
    }
    return map;
}

Measurement changeDetection(std::size_t count) {
    const Workload workload{count};
    return {.table = "Finding one changed input, against comparing two maps of texts",
            .name = std::to_string(count) + " inputs",
            .floor =
                [=](auto& state) {
                    const TextMap maps[2] = {textMap(workload.inputs(0)), textMap(workload.inputs(1))};
                    std::size_t run = 0;
                    measure(state, [&] {
                        std::vector<std::string> changed;
                        for (const auto& [key, value] : maps[++run % 2]) {
                            if (maps[(run + 1) % 2].find(key)->second != value) {
                                changed.push_back(key);
                            }
                        }
                        return changed;
                    });
                },
            .subject =
                [=](auto& state) {
                    const auto collection = QVLPropertyCollection::init();
                    const QVLJSONDictionary inputs[2] = {workload.inputs(0), workload.inputs(1)};
                    std::size_t run = 0;
                    measure(state, [&] {
                        collection->setCollection(inputs[++run % 2]);
                        return run;
                    });
                },
            .hasProcessorTimes = false};
}

Measurement merging(std::size_t count) {
    const Workload workload{count};
    return {.table = "Merging an override into the inputs, against copying a map",
            .name = std::to_string(count) + " inputs",
            .floor =
                [=](auto& state) {
                    const auto map = textMap(workload.inputs(0));
                    measure(state, [&] {
                        TextMap merged = map;
                        merged["variation"] = "2";
                        return merged;
                    });
                },
            .subject =
                [=](auto& state) {
                    const QVLJSONDictionary inputs = workload.inputs(0);
                    const QVLJSONDictionary overrides = {{"variation", 2}};
                    measure(state, [&] { return QVLJSONDictionary::merged(inputs, overrides); });
                },
            .hasProcessorTimes = false};
}

Measurement reading(std::size_t count) {
    const Workload workload{60, count};
    return {.table = "Reading JSON, against the parser's own document",
            .name = std::to_string(count) + " records",
            .floor =
                [=](auto& state) {
                    const std::string text = workload.journalsText();
                    measure(state, [&] {
                        rapidjson::Document document;
                        document.Parse<rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag>(
                            text.data(), text.size());
                        return document.HasParseError();
                    });
                },
            .subject =
                [=](auto& state) {
                    const std::string text = workload.journalsText();
                    measure(state, [&] { return QVLJSONSerialization::JSONObjectWithData(text); });
                },
            .hasProcessorTimes = false};
}

Measurement writing(std::size_t count) {
    const Workload workload{60, count};
    return {.table = "Writing JSON, against the parser's own writer",
            .name = std::to_string(count) + " records",
            .floor =
                [=](auto& state) {
                    rapidjson::Document document;
                    document.Parse(workload.journalsText().c_str());
                    measure(state, [&] {
                        rapidjson::StringBuffer buffer;
                        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
                        document.Accept(writer);
                        return std::string(buffer.GetString(), buffer.GetSize());
                    });
                },
            .subject =
                [=](auto& state) {
                    const QVLJSONValue journals =
                        QVLJSONSerialization::JSONObjectWithData(workload.journalsText()).value;
                    measure(state, [&] { return QVLJSONSerialization::dataWithJSONObject(journals); });
                },
            .hasProcessorTimes = false};
}

Measurement dateText() {
    return {.table = "Dates, against the C library's",
            .name = "a date to its text",
            .floor =
                [](auto& state) {
                    std::time_t time = 1795341600;
                    measure(state, [&] {
                        std::tm fields = {};
                        ++time;
                        ::gmtime_r(&time, &fields);
                        char text[32];
                        return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &fields));
                    });
                },
            .subject =
                [](auto& state) {
                    QVLDate date(std::chrono::seconds(1795341600));
                    measure(state, [&] {
                        date += std::chrono::seconds(1);
                        return QVLDateFormatter::sharedFormatter().stringFromDate(date);
                    });
                },
            .hasProcessorTimes = false};
}

Measurement dateFromText() {
    return {.table = "Dates, against the C library's",
            .name = "a text to its date",
            .floor =
                [](auto& state) {
                    measure(state, [] {
                        std::tm fields = {};
                        ::strptime("2026-11-22T10:00:00Z", "%Y-%m-%dT%H:%M:%SZ", &fields);
                        return ::timegm(&fields);
                    });
                },
            .subject =
                [](auto& state) {
                    measure(state,
                            [] { return QVLDateFormatter::sharedFormatter().dateFromString("2026-11-22T10:00:00Z"); });
                },
            .hasProcessorTimes = false};
}

Measurement reload(std::size_t rules) {
    const Workload workload{60, 500, rules};
    return {.table = "Loading a script and asking it for its support, against a new bare machine and one run",
            .name = std::to_string(rules) + " rules",
            .floor =
                [=](auto& state) {
                    const JSStringRef inputs =
                        BareScript::makeString(QVLJSONSerialization::dataWithJSONObject(workload.inputs(0)).text);
                    const JSStringRef journals = BareScript::makeString(workload.journalsText());
                    const std::string text = workload.script();
                    measure(state, [&] { return BareScript(text).run(inputs, journals); });
                    JSStringRelease(inputs);
                    JSStringRelease(journals);
                },
            .subject =
                [=](auto& state) {
                    const TemporaryDirectory directory;
                    const EngineUnderLoad load(workload, directory.path());
                    const std::string text = workload.script();
                    measure(state, [&] {
                        load.engine().performOnQueue([&](QVLQuorvel& engine) { engine.loadScriptWithJSContent(text); });
                        load.waitForQueue();
                        return 0;
                    });
                },
            .hasProcessorTimes = false};
}

} // namespace

void addPieceMeasurements(Measurements& measurements) {
    for (const auto& piece : {changeDetection, merging}) {
        for (const std::size_t inputs : {60U, 600U, 6000U}) {
            measurements.add(piece(inputs));
        }
    }
    for (const auto& piece : {reading, writing}) {
        for (const std::size_t records : {50U, 500U, 5000U}) {
            measurements.add(piece(records));
        }
    }
    measurements.add(dateText());
    measurements.add(dateFromText());
    for (const std::size_t rules : {15U, 150U, 1500U}) {
        measurements.add(reload(rules));
    }
}
