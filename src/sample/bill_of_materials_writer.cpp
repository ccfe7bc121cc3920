#include "sample/bill_of_materials_writer.h"

#include "sample/byte_writer.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>

namespace tidwen {

namespace {

constexpr std::size_t nodeSize = 4096;
constexpr std::size_t pairsPerNode = 256;

struct Item {
    bool isDirectory = true;
    std::uint32_t size = 0;
    std::map<std::string, Item> children = {};
};

/// An item as listed in a leaf.
struct Record {
    std::uint32_t parent = 0;
    std::uint32_t id = 0;
    std::string name;
    bool isDirectory = true;
    std::uint32_t size = 0;
};

/// A reference from the level above to a node or item: the child, and the File block of its last item.
struct Reference {
    std::uint32_t block = 0;
    std::uint32_t lastFile = 0;
};

Item treeOf(const std::vector<BomEntry>& entries) {
    Item root;
    for (const auto& entry : entries) {
        auto* item = &root;
        std::string_view rest = entry.path;
        while (!rest.empty()) {
            const auto slash = rest.find('/');
            const auto name = rest.substr(0, slash);
            if (!name.empty()) item = &item->children[std::string(name)];
            rest = slash == rest.npos ? std::string_view() : rest.substr(slash + 1);
        }
        if (item == &root) continue;
        item->isDirectory = entry.isDirectory || !item->children.empty();
        item->size = entry.size;
    }
    return root;
}

/// Numbers the items depth first, as the system's own tool does.
void number(const Item& item, const std::string& name, std::uint32_t parent, std::vector<Record>& records) {
    const auto id = static_cast<std::uint32_t>(records.size() + 1);
    records.push_back({parent, id, name, item.isDirectory, item.size});
    for (const auto& [childName, child] : item.children)
        number(child, childName, id, records);
}

class Store {
  public:
    Store() : blocks_(1) {} // block 0 means "none"

    std::uint32_t add(std::string bytes) {
        blocks_.push_back(std::move(bytes));
        return static_cast<std::uint32_t>(blocks_.size() - 1);
    }
    std::uint32_t nextBlock() const { return static_cast<std::uint32_t>(blocks_.size()); }

    std::string take(std::uint32_t info, std::uint32_t paths) const {
        constexpr std::size_t headerSize = 512;
        ByteWriter content, table;
        content.padTo(headerSize);
        table.big32(blocks_.size()).big32(0).big32(0);
        for (std::size_t i = 1; i < blocks_.size(); ++i) {
            table.big32(content.size()).big32(blocks_[i].size());
            content.text(blocks_[i]);
        }
        table.big32(0).big64(0).big64(0); // the free list is empty
        auto variables = ByteWriter()
                             .big32(2)
                             .big32(info)
                             .byte(7)
                             .text("BomInfo")
                             .big32(paths)
                             .byte(5)
                             .text("Paths")
                             .take();

        const auto variablesOffset = content.size();
        const auto tableOffset = variablesOffset + variables.size();
        ByteWriter out;
        out.text("BOMStore").big32(1).big32(blocks_.size() - 1);
        out.big32(tableOffset).big32(table.size()).big32(variablesOffset).big32(variables.size());
        return out.text(content.take().substr(out.size())).text(variables).text(table.take()).take();
    }

  private:
    std::vector<std::string> blocks_;
};

/// Adds the three blocks of one item; returns the pair stored in a leaf.
Reference addItem(const Record& record, Store& store) {
    constexpr std::uint32_t modified = 1'700'000'000;
    ByteWriter details;
    details.byte(record.isDirectory ? 2 : 1)
        .byte(1)
        .big16(0x000f)
        .big16(record.isDirectory ? 0x41ed : 0x81a4);
    details.big32(0).big32(0).big32(modified).big32(record.size).byte(1).big32(0).big32(0);
    if (!record.isDirectory) details.big32(0);
    const auto detailsBlock = store.add(details.take());
    const auto pathInfo = store.add(ByteWriter().big32(record.id).big32(detailsBlock).take());
    return {pathInfo, store.add(ByteWriter().big32(record.parent).terminated(record.name).take())};
}

/// Adds one level of the tree: distributes the references over as many nodes as needed.
std::vector<Reference> addLevel(const std::vector<Reference>& below, bool isLeaf, Store& store) {
    std::vector<Reference> level;
    const auto first = store.nextBlock();
    const auto count = static_cast<std::uint32_t>((below.size() + pairsPerNode - 1) / pairsPerNode);
    for (std::uint32_t n = 0; n < count; ++n) {
        const auto begin = n * pairsPerNode;
        const auto end = std::min(begin + pairsPerNode, below.size());
        ByteWriter node;
        node.big16(isLeaf ? 1 : 0).big16(static_cast<std::uint16_t>(end - begin));
        node.big32(n + 1 < count ? first + n + 1 : 0).big32(n > 0 ? first + n - 1 : 0);
        for (auto i = begin; i < end; ++i)
            node.big32(below[i].block).big32(below[i].lastFile);
        level.push_back({store.add(node.padTo(nodeSize).take()), below[end - 1].lastFile});
    }
    return level;
}

} // namespace

std::string writeBillOfMaterials(const std::vector<BomEntry>& entries) {
    std::vector<Record> records;
    number(treeOf(entries), ".", 0, records);
    std::sort(records.begin(), records.end(), [](const Record& a, const Record& b) {
        return std::tie(a.parent, a.name) < std::tie(b.parent, b.name);
    });

    Store store;
    std::vector<Reference> level;
    level.reserve(records.size());
    for (const auto& record : records)
        level.push_back(addItem(record, store));
    level = addLevel(level, true, store);
    while (level.size() > 1)
        level = addLevel(level, false, store);

    const auto count = records.size();
    const auto info = store.add(ByteWriter().big32(1).big32(count + 1).big32(0).take());
    const auto paths = store.add(ByteWriter()
                                     .text("tree")
                                     .big32(1)
                                     .big32(level.front().block)
                                     .big32(nodeSize)
                                     .big32(count)
                                     .byte(0)
                                     .take());
    return store.take(info, paths);
}

} // namespace tidwen
