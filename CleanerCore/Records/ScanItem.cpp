#include "CleanerCore/Records/ScanItem.h"

#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr std::tuple commandFields{
    field("executable", &CommandSpec::executable),
    field("arguments", &CommandSpec::arguments),
};

constexpr std::tuple targetCases{
    variantCase<PathTarget>("path", field("_0", &PathTarget::path)),
    variantCase<CommandTarget>("command", field("_0", &CommandTarget::command)),
    variantCase<AdminPathTarget>("adminPath", field("_0", &AdminPathTarget::path)),
    variantCase<EvictTarget>("evict", field("_0", &EvictTarget::path)),
};

constexpr std::tuple itemFields{
    field("id", &ScanItem::id),
    field("title", &ScanItem::title),
    field("target", &ScanItem::target),
    field("size", &ScanItem::size),
    field("category", &ScanItem::category),
    field("risk", &ScanItem::risk),
    field("reason", &ScanItem::reason),
    field("lastUsed", &ScanItem::lastUsed),
};

struct Identifier {
    std::string operator()(const PathTarget& target) const { return target.path; }
    std::string operator()(const AdminPathTarget& target) const { return target.path; }
    std::string operator()(const EvictTarget& target) const { return "evict:" + target.path; }
    std::string operator()(const CommandTarget& target) const { return "cmd:" + target.command.display(); }
};

struct PathOf {
    const std::string* operator()(const CommandTarget&) const { return nullptr; }
    const std::string* operator()(const auto& target) const { return &target.path; }
};

std::string defaultTitle(const ItemTarget& target) {
    if (const auto* command = std::get_if<CommandTarget>(&target)) return command->command.display();
    return lastPathComponent(*std::visit(PathOf{}, target));
}

} // namespace

LOFTMERE_RECORD_CODEC(CommandSpec, commandFields)
LOFTMERE_VARIANT_CODEC(ItemTarget, targetCases)
LOFTMERE_RECORD_CODEC(ScanItem, itemFields)

std::string CommandSpec::display() const {
    std::string text = executable;
    for (const std::string& argument : arguments) text += " " + argument;
    return text;
}

ScanItem ScanItem::make(ItemDescription description) {
    ScanItem item;
    item.id = std::visit(Identifier{}, description.target);
    item.title = description.title ? std::move(*description.title) : defaultTitle(description.target);
    item.target = std::move(description.target);
    item.size = description.size;
    item.category = description.category;
    item.risk = description.risk;
    item.reason = std::move(description.reason);
    item.lastUsed = description.lastUsed;
    return item;
}

const std::string* ScanItem::path() const {
    return std::holds_alternative<EvictTarget>(target) ? nullptr : anyPath();
}

const std::string* ScanItem::anyPath() const {
    return std::visit(PathOf{}, target);
}

int64_t CategoryResult::totalSize() const {
    int64_t total = 0;
    for (const ScanItem& item : items) addBytes(total, item.size);
    return total;
}

} // namespace loftmere
