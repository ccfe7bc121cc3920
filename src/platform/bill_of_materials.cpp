#include "platform/bill_of_materials.h"

#include "platform/byte_reader.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace tidwen {

namespace {

// Far more than installers write: the largest packages list some hundred thousand items.
constexpr std::size_t maxEntries = 1'000'000;
constexpr std::size_t maxNameBytes = 1024;
constexpr std::size_t maxPathBytes = 4096;
constexpr std::size_t maxPathDepth = 1024;
constexpr std::size_t maxTextBytes = 128u << 20;
constexpr std::size_t maxTreeDepth = 32;

constexpr std::uint64_t headerSize = 512;

/// A file of numbered blocks; all numbers are big-endian. Block 0 means "none".
class BlockStore {
  public:
    /// nullopt when the header or the block table extends past the end.
    static std::optional<BlockStore> open(std::string_view bytes) {
        const ByteReader in(bytes);
        const auto version = in.big32(8), table = in.big32(16), variables = in.big32(24);
        if (!bytes.starts_with("BOMStore") || !in.slice(0, headerSize) || version != 1u) return std::nullopt;
        const auto count = in.big32(*table);
        if (!count || !in.slice(std::uint64_t{*table} + 4, std::uint64_t{*count} * 8)) return std::nullopt;
        return BlockStore(in, *table, *count, *variables);
    }

    std::uint32_t count() const { return count_; }

    std::optional<ByteReader> block(std::uint32_t number) const {
        if (number == 0 || number >= count_) return std::nullopt;
        const auto entry = std::uint64_t{table_} + 4 + std::uint64_t{number} * 8;
        const auto bytes = in_.slice(*in_.big32(entry), *in_.big32(entry + 4));
        if (!bytes) return std::nullopt;
        return ByteReader(*bytes);
    }

    std::optional<ByteReader> variable(std::string_view name) const {
        const auto count = in_.big32(variables_);
        std::uint64_t at = std::uint64_t{variables_} + 4;
        for (std::uint32_t i = 0; count && i < *count; ++i) {
            const auto number = in_.big32(at);
            const auto length = in_.byte(at + 4);
            if (!number || !length) return std::nullopt;
            auto found = in_.slice(at + 5, *length);
            if (!found) return std::nullopt;
            if (found->ends_with('\0')) found->remove_suffix(1); // some writers include the NUL byte
            if (*found == name) return block(*number);
            at += 5 + std::uint64_t{*length};
        }
        return std::nullopt;
    }

  private:
    BlockStore(ByteReader in, std::uint32_t table, std::uint32_t count, std::uint32_t variables)
        : in_(in), table_(table), count_(count), variables_(variables) {}

    ByteReader in_;
    std::uint32_t table_;
    std::uint32_t count_;
    std::uint32_t variables_;
};

struct Entry {
    std::uint32_t id = 0;
    std::uint32_t parent = 0; ///< 0: none
    std::string_view name;
    std::optional<std::string> path; ///< composed; empty for the root "."
};

struct Node {
    ByteReader bytes;
    bool isLeaf = false;
    std::uint16_t entries = 0;
    std::uint32_t next = 0;

    std::uint32_t first(std::uint64_t i) const { return *bytes.big32(12 + 8 * i); }
    std::uint32_t second(std::uint64_t i) const { return *bytes.big32(16 + 8 * i); }
};

std::optional<Node> nodeAt(const BlockStore& store, std::uint32_t number) {
    const auto bytes = store.block(number);
    if (!bytes) return std::nullopt;
    const auto isLeaf = bytes->big16(0), entries = bytes->big16(2);
    const auto next = bytes->big32(4);
    if (!isLeaf || !entries || !next || !bytes->slice(12, std::uint64_t{*entries} * 8)) return std::nullopt;
    return Node{*bytes, *isLeaf != 0, *entries, *next};
}

std::optional<Node> firstLeaf(const BlockStore& store) {
    const auto tree = store.variable("Paths");
    if (!tree || tree->slice(0, 4) != "tree") return std::nullopt;
    const auto root = tree->big32(8);
    auto node = root ? nodeAt(store, *root) : std::nullopt;
    for (std::size_t depth = 0; node && !node->isLeaf; ++depth) {
        if (depth == maxTreeDepth || node->entries == 0) return std::nullopt;
        node = nodeAt(store, node->first(0));
    }
    return node;
}

std::optional<Entry> entryAt(const BlockStore& store, const Node& leaf, std::uint64_t i) {
    const auto info = store.block(leaf.first(i));
    const auto file = store.block(leaf.second(i));
    if (!info || !file) return std::nullopt;
    const auto id = info->big32(0), parent = file->big32(0);
    const auto name = file->terminated(4, maxNameBytes);
    if (!id || !parent || !name || *id == 0) return std::nullopt;
    const bool isOneComponent = !name->empty() && *name != ".." && name->find('/') == name->npos;
    if (!isOneComponent || (*name == "." && *parent != 0)) return std::nullopt;
    return Entry{*id, *parent, *name, std::nullopt};
}

/// The entries of all leaves in order. A cyclic chain of leaves is longer than the number of blocks.
std::optional<std::vector<Entry>> readEntries(const BlockStore& store) {
    std::vector<Entry> entries;
    auto leaf = firstLeaf(store);
    for (std::uint32_t visited = 1; leaf; ++visited) {
        if (!leaf->isLeaf || visited > store.count() || entries.size() + leaf->entries > maxEntries)
            return std::nullopt;
        for (std::uint64_t i = 0; i < leaf->entries; ++i) {
            const auto entry = entryAt(store, *leaf, i);
            if (!entry) return std::nullopt;
            entries.push_back(*entry);
        }
        if (leaf->next == 0) return entries;
        leaf = nodeAt(store, leaf->next);
    }
    return std::nullopt;
}

using EntriesByID = std::unordered_map<std::uint32_t, Entry*>;

/// Sets the path of an entry and of its parents. False when a parent is missing, the parents form a cycle, or
/// the path is too long for a Mac.
bool compose(Entry& entry, const EntriesByID& byID) {
    std::vector<Entry*> chain;
    auto* top = &entry;
    for (; !top->path; top = byID.at(top->parent)) {
        chain.push_back(top);
        if (chain.size() > maxPathDepth) return false;
        if (top->parent == 0) break;
        if (!byID.contains(top->parent)) return false;
    }
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        auto& each = **it;
        const std::string& folder = each.parent == 0 ? std::string() : *byID.at(each.parent)->path;
        if (each.name == ".")
            each.path = "";
        else
            each.path = folder.empty() ? std::string(each.name) : folder + '/' + std::string(each.name);
        if (each.path->size() > maxPathBytes) return false;
    }
    return true;
}

} // namespace

std::optional<std::vector<std::string>> readBillOfMaterials(std::string_view bytes) {
    const auto store = BlockStore::open(bytes);
    if (!store) return std::nullopt;
    auto entries = readEntries(*store);
    if (!entries) return std::nullopt;

    EntriesByID byID;
    byID.reserve(entries->size());
    for (auto& entry : *entries)
        if (!byID.emplace(entry.id, &entry).second) return std::nullopt;

    std::size_t textBytes = 0;
    for (auto& entry : *entries) {
        if (!compose(entry, byID)) return std::nullopt;
        textBytes += entry.path->size();
        if (textBytes > maxTextBytes) return std::nullopt;
    }
    std::vector<std::string> paths;
    for (auto& entry : *entries)
        if (!entry.path->empty()) paths.push_back(std::move(*entry.path));
    return paths;
}

} // namespace tidwen
