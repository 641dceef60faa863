#include "CleanerCore/Records/CommandSpec.h"

#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr std::tuple fields{
    field("executable", &CommandSpec::executable),
    field("arguments", &CommandSpec::arguments),
};

} // namespace

std::string CommandSpec::display() const {
    std::string text = executable;
    for (const std::string& argument : arguments) text += " " + argument;
    return text;
}

Json JsonCodec<CommandSpec>::encode(const CommandSpec& value) {
    return encodeRecord(value, fields);
}

std::optional<CommandSpec> JsonCodec<CommandSpec>::decode(const Json& json) {
    return decodeRecord(json, CommandSpec{}, fields);
}

} // namespace loftmere
