#include "CleanerCore/Records/ScanItem.h"

#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/RecordCodec.h"

namespace loftmere {

namespace {

constexpr std::tuple fields{
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

Json JsonCodec<ScanItem>::encode(const ScanItem& value) {
    return encodeRecord(value, fields);
}

std::optional<ScanItem> JsonCodec<ScanItem>::decode(const Json& json) {
    return decodeRecord(json, ScanItem{}, fields);
}

} // namespace loftmere
