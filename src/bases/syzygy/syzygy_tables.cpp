#include "bases/syzygy/syzygy_tables.h"

#include "text/option.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace brenquil {

CSyzygyTables::CSyzygyTables(IHost& host) : host_(host) {}

CSyzygyTables::~CSyzygyTables() = default;

void CSyzygyTables::SetPath(const std::string& path) {
    if (path == path_) {
        return;
    }
    host_.EndSearch();
    path_ = path;
    usableMen_ = -1;
    loaded_ = !path.empty() && path != COptionGroup::EmptyPath && SyzygyInit(path);
    if (loaded_) {
        usableMen_ = maxMen_.Load();
    }
}

bool CSyzygyTables::SyzygyInit(const std::string& path) {
    ForgetTables();
    if (pieceEntries_ == nullptr) {
        pieceEntries_ = std::make_unique<TbEntry[]>(TBMAX_PIECE);
        pawnEntries_ = std::make_unique<TbEntry[]>(TBMAX_PAWN);
    }
    paths_.Set(path);
    for (const std::string& name : AllTableNames()) {
        if (!paths_.TbOpenFile(name, TbWdlSuffix).empty()) {
            AddTable(name);
        }
    }
    host_.PrintBare("info string Found " + std::to_string(Count()) + " tablebases.");
    return true;
}

void CSyzygyTables::AddTable(const std::string& name) {
    const TbShape shape = ShapeOfName(name);
    if (shape.hasPawns && pawnCount_ == TBMAX_PAWN) {
        host_.Fail(IHost::Stream::Error, "TBMAX_PAWN limit too low!\n");
    }
    if (!shape.hasPawns && pieceCount_ == TBMAX_PIECE) {
        host_.Fail(IHost::Stream::Error, "TBMAX_PIECE limit too low!\n");
    }
    TbEntry& entry = shape.hasPawns ? pawnEntries_[pawnCount_++] : pieceEntries_[pieceCount_++];
    entry.shape = shape;
    maxMen_ = std::max<int>(maxMen_, shape.men);
    AddKey(shape.key, entry);
    if (!shape.symmetric) {
        AddKey(shape.mirrorKey, entry);
    }
}

void CSyzygyTables::AddKey(std::uint64_t key, TbEntry& entry) {
    if (!hash_.Add(key, entry)) {
        host_.Fail(IHost::Stream::Error, "HSHMAX too low!\n");
    }
}

void CSyzygyTables::ForgetTables() noexcept {
    for (std::size_t i = 0; i < pieceCount_; ++i) {
        ReleaseWdlTable(pieceEntries_[i]);
    }
    for (std::size_t i = 0; i < pawnCount_; ++i) {
        ReleaseWdlTable(pawnEntries_[i]);
    }
    pieceCount_ = 0;
    pawnCount_ = 0;
    maxMen_ = 0;
    hash_.Clear();
    for (DtzCacheEntry& row : dtzCache_) {
        row = {};
    }
}

const TbEntry* CSyzygyTables::TbFindWdl(const TbPosition& position, std::uint64_t key) {
    CTbHash::Slot* const slot = hash_.Find(key);
    if (slot == nullptr ||
        (!slot->entry->ready.load(std::memory_order_acquire) && !LoadWdl(position, key, *slot))) {
        return nullptr;
    }
    return slot->entry;
}

bool CSyzygyTables::LoadWdl(const TbPosition& position, std::uint64_t key, CTbHash::Slot& slot) {
    const std::scoped_lock lock(mutex_);
    TbEntry& entry = *slot.entry;
    if (entry.ready.load(std::memory_order_relaxed)) {
        return true;
    }
    if (slot.key != key) {
        return false;  // another thread failed to load it while this one waited
    }
    const std::string name = MaterialName(position, entry.shape.key != key);
    if (!paths_.TbMapFile(name, TbWdlSuffix, entry.file)) {
        (void)std::fprintf(stderr, "Could not find %s.rtbw\n", name.c_str());
        (void)std::fflush(stderr);
        slot.key = 0;
        return false;
    }
    entry.data = entry.file.Bytes();
    if (!ReadWdlTable(entry)) {
        slot.key = 0;
        return false;
    }
    entry.ready.store(true, std::memory_order_release);
    return true;
}

const DtzEntry* CSyzygyTables::TbFindDtz(const TbPosition& position) {
    const std::uint64_t key = MaterialKey(position, false);
    auto* const hit = std::find_if(dtzCache_.begin(), dtzCache_.end(), [=](const auto& row) {
        return row.key == key || row.mirrorKey == key;
    });
    if (hit != dtzCache_.end()) {
        std::rotate(dtzCache_.begin(), hit, hit + 1);
        return dtzCache_.front().entry.get();
    }
    CTbHash::Slot* const slot = hash_.Find(key);
    if (slot == nullptr) {
        return nullptr;
    }
    const bool mirror = slot->entry->shape.key != key;
    std::rotate(dtzCache_.begin(), dtzCache_.end() - 1, dtzCache_.end());
    DtzCacheEntry& front = dtzCache_.front();
    front.key = MaterialKey(position, mirror);
    front.mirrorKey = MaterialKey(position, !mirror);
    front.entry.reset();  // the table of the row that has fallen out
    front.entry = LoadDtz(MaterialName(position, mirror), slot->entry->shape);
    return front.entry.get();
}

std::unique_ptr<DtzEntry> CSyzygyTables::LoadDtz(std::string_view name, const TbShape& shape) {
    auto entry = std::make_unique<DtzEntry>();
    entry->shape = shape;
    if (!paths_.TbMapFile(name, TbDtzSuffix, entry->file)) {
        return nullptr;
    }
    entry->data = entry->file.Bytes();
    return ReadDtzTable(*entry) ? std::move(entry) : nullptr;
}

}  // namespace brenquil
