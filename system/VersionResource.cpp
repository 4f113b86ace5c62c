#include <system/VersionResource.h>
#include <tessel/foundation/platform.h>

#include <cstring>

namespace tessel {

namespace {

/// Below the root: blocks, their languages and the texts of these.
constexpr int kDepth = 3;

/// Offset of the key in the resource of a 16-bit program, whose blocks have no type and 8-bit texts. In all others a
/// number below the first printable character is there.
constexpr std::size_t kNarrowKey = 4;
constexpr std::size_t kWideKey = 6;
constexpr unsigned char kFirstPrintable = ' ';
constexpr unsigned char kBeyondAscii = 0x80;

/// A block: length, length of the value, type, key, value, children; each of the last three is aligned.
struct Block {
    std::size_t children; ///< offset of the first child
    std::size_t end;      ///< offset of what follows
};

constexpr std::size_t Align(std::size_t offset) {
    return (offset + 3) & ~std::size_t{3};
}

class Tree {
public:
    Tree(const unsigned char* info, std::size_t size)
        : m_info(info), m_size(size), m_isWide(size > kNarrowKey && info[kNarrowKey] < kFirstPrintable) {}

    VersionResource Check() const {
        Block root{};
        if (m_size <= kNarrowKey || m_info[kNarrowKey] >= kBeyondAscii || !Read(0, m_size, root)) {
            return VersionResource::DAMAGED;
        }
        return HasRoomToWiden(root) && AreChildrenComplete(root, kDepth) ? VersionResource::COMPLETE
                                                                         : VersionResource::FIXED_PART;
    }

private:
    std::size_t NumberAt(std::size_t offset) const {
        return m_info[offset] | static_cast<std::size_t>(m_info[offset + 1]) << 8;
    }

    /// The system writes converted 8-bit texts after the resource, as far as the root's length promises room.
    bool HasRoomToWiden(const Block& root) const {
        constexpr std::size_t kPromised = 4;
        return m_isWide || (root.end - sizeof(VS_FIXEDFILEINFO)) * kPromised <= m_size;
    }

    /// @return offset after the terminator; 0: the key has none
    std::size_t EndOfKey(std::size_t key, std::size_t end) const {
        const std::size_t step = m_isWide ? sizeof(char16_t) : 1;
        for (; key + step <= end; key += step) {
            if (m_info[key] == 0 && m_info[key + step - 1] == 0) return key + step;
        }
        return 0;
    }

    /// @return false: the block is longer than its room or shorter than its key
    bool Read(std::size_t start, std::size_t limit, Block& block) const {
        const std::size_t key = start + (m_isWide ? kWideKey : kNarrowKey);
        if (key > limit) return false;
        block.end = start + NumberAt(start);
        const std::size_t endOfKey = block.end <= limit ? EndOfKey(key, block.end) : 0;
        if (endOfKey == 0) return false;
        const std::size_t unit = m_isWide && NumberAt(start + kNarrowKey) != 0 ? sizeof(char16_t) : 1;
        block.children = Align(Align(endOfKey) + NumberAt(start + sizeof(char16_t)) * unit);
        return true;
    }

    bool AreChildrenComplete(const Block& parent, int depth) const {
        if (depth == 0) return true;
        for (std::size_t start = parent.children; start + sizeof(char16_t) <= parent.end && NumberAt(start) != 0;) {
            Block child{};
            if (!Read(start, parent.end, child) || !AreChildrenComplete(child, depth - 1)) return false;
            start = Align(child.end);
        }
        return true;
    }

    const unsigned char* m_info;
    std::size_t m_size;
    bool m_isWide;
};

} // namespace

VersionResource CheckVersionResource(const unsigned char* info, std::size_t size) {
    return Tree(info, size).Check();
}

} // namespace tessel
