#include "bases/nalimov/nalimov_bases_dtm.h"

#include "bases/nalimov/nalimov_probe.h"
#include "board/move_generator.h"
#include "board/score.h"
#include "text/text.h"

#include <cstdlib>
#include <memory>

namespace brenquil {

namespace {

constexpr int LastPlyWithClock = 2;  ///< after it a running fifty-move clock rules answers out

std::string MarkOf(Score score) {
    if (score == 0) {
        return "0";
    }
    const Score moves = (MateScore - std::abs(score)) / 2;
    return score > 0 ? "+M" + std::to_string(moves + 1) : "-M" + std::to_string(moves);
}

}  // namespace

CNalimovBasesDTM::CNalimovBasesDTM(IHost& host) : host_(host) {
    options.path.onChange = [this](const std::string& path) { SetPath(path); };
    options.cache.onChange = [this](const std::string& megabytes) { SetCache(megabytes); };
}

void CNalimovBasesDTM::SetPath(const std::string& path) {
    if (path == path_) {
        return;
    }
    host_.EndSearch();
    path_ = path;
    cache_.Clear();
    const int men = tables_.RegisterAll(path);
    cache_.PrepareDecoding();
    if (men != 0) {
        host_.Print("tablebases " + std::to_string(men) + "-men loaded!");
    }
}

void CNalimovBasesDTM::SetCache(const std::string& megabytes) {
    const int size = IsNumeric(megabytes) ? ToInteger(megabytes) : cache_.Megabytes();
    if (size != cache_.Megabytes()) {
        host_.EndSearch();
        cache_.Resize(size);
    }
}

bool CNalimovBasesDTM::MayAnswer(const CPosition& position) const noexcept {
    const int menLoaded = tables_.menLoaded;
    return menLoaded != 0 && menLoaded >= position.MenCount();
}

bool CNalimovBasesDTM::ProbeSearch(Score& score, const CPosition& position, int depth, int ply) {
    if (!MayAnswer(position) || options.usage.choice != CNalimovOptions::InSearch) {
        return false;
    }
    if (depth < options.minDepth.number || ply < 1 ||
        (position.halfmoveClock != 0 && ply > LastPlyWithClock) ||
        !NalimovProbe(score, position, tables_, cache_)) {
        return false;
    }
    if (score > 0) {
        score -= ply;
    } else if (score < 0) {
        score += ply;
    }
    return true;
}

bool CNalimovBasesDTM::ProbeRoot(Move& move, const CPosition& position) {
    if (!MayAnswer(position) || options.usage.choice == CNalimovOptions::Never) {
        return false;
    }
    const auto copy = std::make_unique<CPosition>();
    copy->CopyFrom(position);
    MoveList moves;
    CMoveGenerator(*copy).GenerateMoves(moves, MoveKinds::All);
    bool isFound = false;
    for (Move candidate : moves) {
        if (!copy->MakeMove(candidate)) {
            continue;
        }
        Score score = 0;
        // A tie keeps the earlier move.
        if (NalimovProbe(score, *copy, tables_, cache_) && (!isFound || -score > move.Order())) {
            isFound = true;
            move = candidate;
            move.SetOrder(-score);
        }
        copy->UndoMove(candidate);
    }
    return isFound;
}

bool CNalimovBasesDTM::ProbeMoveInfo(BaseMoveInfo& info, Move move, const CPosition& position) {
    if (!MayAnswer(position) || options.usage.choice == CNalimovOptions::Never) {
        return false;
    }
    const auto copy = std::make_unique<CPosition>();
    copy->CopyFrom(position);
    Score score = 0;
    // The copy may let another rook castle than the position does.
    if (!CMoveGenerator(*copy).IsPseudoLegal(move) || !copy->MakeMove(move) ||
        !NalimovProbe(score, *copy, tables_, cache_)) {
        return false;
    }
    info.move = move;
    info.move.SetOrder(-score);
    info.text = MarkOf(-score);
    return true;
}

}  // namespace brenquil
