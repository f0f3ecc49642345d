#include "controls/win32/PackedIcon.h"

#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "runtime/Unpack.h"

namespace kestrelguard {

namespace {

/// What an icon file begins with, and one of its entries.
struct IconHead {
    WORD reserved;
    WORD type;
    WORD count;
};
#pragma pack(push, 2)
struct IconEntry {
    BYTE width;
    BYTE height;
    BYTE colours;
    BYTE reserved;
    WORD planes;
    WORD depth;
    DWORD length;
    DWORD place;
};
#pragma pack(pop)
static_assert(sizeof(IconHead) == 6 && sizeof(IconEntry) == 16);

/// The version of icons that the function wants to be told; there is no other.
constexpr DWORD kIconVersion = 0x00030000;

template <class Record>
std::optional<Record> RecordAt(std::span<const std::byte> file, std::size_t place) {
    if (file.size() < sizeof(Record) || place > file.size() - sizeof(Record)) {
        return std::nullopt;
    }
    Record record;
    std::memcpy(&record, file.data() + place, sizeof record);
    return record;
}

/// Whether `one` is better than `other` for that size and for the screen: large enough before too small, then
/// the nearest, then the one with the most colours that the screen can show.
bool Better(const IconEntry& one, const IconEntry& other, int size, int depth) {
    const auto rank = [size](const IconEntry& entry) {
        return entry.width >= size ? entry.width - size : 0x1000 + size - entry.width;
    };
    if (rank(one) != rank(other)) {
        return rank(one) < rank(other);
    }
    const bool fits = one.depth <= depth;
    return fits != (other.depth <= depth) ? fits : (one.depth > other.depth) == fits;
}

int ScreenDepth() {
    const HDC screen = GetDC(nullptr);
    const int depth = GetDeviceCaps(screen, BITSPIXEL) * GetDeviceCaps(screen, PLANES);
    ReleaseDC(nullptr, screen);
    return depth;
}

}  // namespace

Icon LoadPackedIcon(HMODULE module, int resource, int size) {
    const HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(resource), RT_RCDATA);
    const HGLOBAL loaded = found == nullptr ? nullptr : LoadResource(module, found);
    const void* bytes = loaded == nullptr ? nullptr : LockResource(loaded);
    if (bytes == nullptr) {
        return Icon();
    }
    const auto file = Unpack({static_cast<const std::byte*>(bytes), SizeofResource(module, found)});
    const auto head = file ? RecordAt<IconHead>(*file, 0) : std::nullopt;
    std::optional<IconEntry> best;
    for (std::size_t index = 0; head && index < head->count; ++index) {
        const auto entry = RecordAt<IconEntry>(*file, sizeof(IconHead) + index * sizeof(IconEntry));
        if (entry && (!best || Better(*entry, *best, size, ScreenDepth()))) {
            best = entry;
        }
    }
    if (!best || best->length > file->size() || best->place > file->size() - best->length) {
        return Icon();
    }
    std::vector<BYTE> picture(best->length);  // the function wants bytes that can be changed
    std::memcpy(picture.data(), file->data() + best->place, picture.size());
    return Icon(CreateIconFromResourceEx(picture.data(), best->length, TRUE, kIconVersion, size, size,
                                         LR_DEFAULTCOLOR));
}

}  // namespace kestrelguard
