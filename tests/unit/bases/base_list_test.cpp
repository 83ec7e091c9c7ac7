// The list of bases: who is asked, in which order, and how answers are counted.

#include "bases/base.h"
#include "board/position_text.h"

#include <gtest/gtest.h>
#include <vector>

namespace brenquil {
namespace {

/// A base of a given rank that answers when it is told to, and counts the questions.
class CNumberedBase final : public IBase {
public:
    explicit CNumberedBase(std::uint32_t priority, int answer = 0)
        : answer_(answer), priority_(priority) {}

    [[nodiscard]] std::uint32_t GetPriority() const override { return priority_; }

    [[nodiscard]] bool ProbeSearch(Score& score, const CPosition& position, int depth,
                                   int ply) override {
        ++asked;
        lastKey = position.key;
        lastDepth = depth;
        lastPly = ply;
        if (answer_ != 0) {
            score = answer_;
        }
        return answer_ != 0;
    }

    [[nodiscard]] bool ProbeRoot(Move& move, const CPosition& position) override {
        ++asked;
        lastKey = position.key;
        if (answer_ != 0) {
            move = Move{static_cast<std::uint32_t>(answer_)};
        }
        return answer_ != 0;
    }

    [[nodiscard]] bool ProbeMoveInfo(BaseMoveInfo&, Move, const CPosition&) override {
        return false;
    }

    int asked = 0;
    std::uint64_t lastKey = 0;
    int lastDepth = 0;
    int lastPly = 0;

private:
    int answer_;
    std::uint32_t priority_;
};

TEST(BaseList, WithNothingInItAnswersNothing) {
    CBaseList list;
    const CPosition position;
    Score score = 77;
    Move move{77};
    EXPECT_TRUE(list.Bases().empty());
    EXPECT_FALSE(list.ProbeSearch(score, position, 3, 4));
    EXPECT_FALSE(list.ProbeRoot(move, position));
    EXPECT_EQ(score, 77);
    EXPECT_EQ(move.word, 77U);
    EXPECT_EQ(list.hits, 0U);
}

TEST(BaseList, OrdersByPriorityWhateverTheOrderOfArrival) {
    CNumberedBase book(0);
    CNumberedBase nalimov(2);
    CNumberedBase distance(1);
    CNumberedBase result(3);
    CBaseList list;
    for (CNumberedBase* base : {&book, &nalimov, &distance, &result}) {
        list.Add(*base);
    }
    EXPECT_EQ(list.Bases(), (std::vector<IBase*>{&book, &distance, &nalimov, &result}));

    CBaseList reversed;
    for (CNumberedBase* base : {&result, &distance, &nalimov, &book}) {
        reversed.Add(*base);
    }
    EXPECT_EQ(reversed.Bases(), list.Bases());
}

TEST(BaseList, KeepsTheOrderOfArrivalAmongEquals) {
    CNumberedBase first(1);
    CNumberedBase second(1);
    CNumberedBase third(1);
    CNumberedBase before(0);
    CBaseList list;
    for (CNumberedBase* base : {&first, &second, &before, &third}) {
        list.Add(*base);
    }
    EXPECT_EQ(list.Bases(), (std::vector<IBase*>{&before, &first, &second, &third}));
}

TEST(BaseList, DropsAnObjectOfAPriorityAboveThree) {
    CNumberedBase last(3);
    CNumberedBase beyond(4);
    CNumberedBase farBeyond(0xFFFFFFFF);
    CBaseList list;
    list.Add(beyond);
    EXPECT_TRUE(list.Bases().empty());
    list.Add(last);
    list.Add(farBeyond);
    EXPECT_EQ(list.Bases(), std::vector<IBase*>{&last});
}

TEST(BaseList, EndsTheAskingWithTheFirstAnswer) {
    CNumberedBase silent(0);
    CNumberedBase answering(1, 42);
    CNumberedBase later(2, 43);
    CBaseList list;
    for (CNumberedBase* base : {&later, &answering, &silent}) {
        list.Add(*base);
    }
    const CPosition position;
    Score score = 0;
    EXPECT_TRUE(list.ProbeSearch(score, position, 5, 6));
    EXPECT_EQ(score, 42);
    EXPECT_EQ(answering.lastKey, position.key);
    EXPECT_EQ(answering.lastDepth, 5);
    EXPECT_EQ(answering.lastPly, 6);
    Move move{0};
    EXPECT_TRUE(list.ProbeRoot(move, position));
    EXPECT_EQ(move.word, 42U);
    EXPECT_EQ(silent.asked, 2);
    EXPECT_EQ(answering.asked, 2);
    EXPECT_EQ(later.asked, 0);
}

TEST(BaseList, AsksInTheSearchNoneThatCannotAnswerThere) {
    CNumberedBase atRootOnly(0);
    CNumberedBase table(1, 42);
    CBaseList list;
    list.Add(atRootOnly, 0);
    list.Add(table, 4);
    CPosition position;
    Score score = 0;
    CPositionText(position).SetFen("8/8/8/4k3/8/2PPK3/8/7r w - - 0 1");
    EXPECT_FALSE(list.ProbeSearch(score, position, 5, 6));
    EXPECT_EQ(atRootOnly.asked + table.asked, 0);

    CPositionText(position).SetFen("8/8/8/4k3/8/3PK3/8/7r w - - 0 1");
    EXPECT_TRUE(list.ProbeSearch(score, position, 5, 6));
    EXPECT_EQ(table.asked, 1);
    EXPECT_EQ(atRootOnly.asked, 0);

    Move move{0};
    const CPosition start;
    EXPECT_TRUE(list.ProbeRoot(move, start));
    EXPECT_EQ(atRootOnly.asked, 1);
}

TEST(BaseList, CountsAnswersOnly) {
    CNumberedBase silent(0);
    CNumberedBase answering(3, 42);
    CBaseList list;
    list.Add(silent);
    const CPosition position;
    Score score = 0;
    Move move{0};
    EXPECT_FALSE(list.ProbeSearch(score, position, 0, 0));
    EXPECT_FALSE(list.ProbeRoot(move, position));
    EXPECT_EQ(list.hits, 0U);
    list.Add(answering);
    EXPECT_TRUE(list.ProbeSearch(score, position, 0, 0));
    EXPECT_EQ(list.hits, 1U);
    EXPECT_TRUE(list.ProbeRoot(move, position));
    EXPECT_TRUE(list.ProbeSearch(score, position, 0, 0));
    EXPECT_EQ(list.hits, 3U);
    list.hits = 0;
    EXPECT_TRUE(list.ProbeSearch(score, position, 0, 0));
    EXPECT_EQ(list.hits, 1U);
}

}  // namespace
}  // namespace brenquil
