#pragma once

#include "Fuzzer.h"
#include "QVLQuorvel.h"

/// Reads every output of an engine in every way that a host can.
inline void readOutputs(const QVLQuorvel& engine) {
    for (const std::string& key : engine.outputs().allKeys()) {
        const std::shared_ptr<QVLOutput> output = engine.outputForKey(key);
        expect(output != nullptr, "there is an output for each key");
        const QVLJSONValue& value = output->genericValue();
        expect(output->stringValue().has_value() == value.isString(), "a text reads as text, and nothing else does");
        expect(output->arrayValue().has_value() == value.isArray(), "an array reads as such, and nothing else does");
        expect(output->dictionaryValue().has_value() == value.isDictionary(),
               "a dictionary reads as such, and nothing else does");
        expect(value.isNumber() || (output->integerValue() == 0 && !output->boolValue()),
               "what is no number reads as 0 and false");
        const std::shared_ptr<QVLJSONSerializable> copy = output->copy();
        expect(copy->isEqual(*output) && copy->hash() == output->hash(), "a copy equals its original");
        expect(!output->description().empty(), "an output can be described");
    }
    engine.logData();
}
