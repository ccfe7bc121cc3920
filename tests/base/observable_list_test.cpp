#include "base/list_change.h"
#include "base/observable.h"
#include "base/observable_list.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace tidwen {
namespace {

struct Row {
    std::string name;
    int value = 0;
    const std::string& key() const { return name; }
    friend bool operator==(const Row&, const Row&) = default;
};

/// Follows a list as a view does, using only the steps.
struct Follower {
    explicit Follower(ObservableList<Row>& list)
        : before(list.willChange.connect([&](const auto&) { EXPECT_EQ(rows, list.rows()); })),
          after(list.changed.connect([this, &list](const auto& change) { follow(change, list.rows()); })) {}

    void follow(const RowChange& change, const std::vector<Row>& now) {
        const auto at = [&](auto& any, std::size_t i) {
            return any.begin() + static_cast<std::ptrdiff_t>(i);
        };
        const auto end = change.first + change.count;
        switch (change.kind) {
        case RowChange::Kind::reset:
            ++resets;
            rows = now;
            break;
        case RowChange::Kind::inserted:
            rows.insert(at(rows, change.first), at(now, change.first), at(now, end));
            break;
        case RowChange::Kind::removed:
            rows.erase(at(rows, change.first), at(rows, end));
            break;
        case RowChange::Kind::changed:
            for (auto i = change.first; i < end; ++i)
                rows[i] = now[i];
            break;
        }
        ++steps;
        EXPECT_EQ(rows, now);
    }

    std::vector<Row> rows;
    std::size_t steps = 0, resets = 0;
    Subscription before, after;
};

TEST(ObservableList, IsFollowedStepByStep) {
    std::mt19937 random(7);
    ObservableList<Row> list;
    Follower follower(list);
    for (int round = 0; round < 500; ++round) {
        std::vector<Row> rows;
        for (int name = 0; name < 12; ++name)
            if (random() % 3 != 0) rows.push_back({std::to_string(name), static_cast<int>(random() % 2)});
        if (round % 2 == 0) std::shuffle(rows.begin(), rows.end(), random);
        list.assign(rows);
        ASSERT_EQ(list.rows(), rows);
        ASSERT_EQ(follower.rows, rows);
    }
    EXPECT_EQ(follower.resets, 0u);
}

TEST(ObservableList, TakesFewStepsForWhatChangedAndOneForTooMuch) {
    std::vector<Row> rows;
    for (std::size_t i = 0; i < 2 * mostRowChanges + 2; ++i)
        rows.push_back({std::to_string(i), 0});
    ObservableList<Row> list;
    Follower follower(list);
    const auto stepsTo = [&](const std::vector<Row>& target) {
        follower.steps = 0;
        list.assign(target);
        return follower.steps;
    };
    EXPECT_EQ(stepsTo(rows), 1u);
    EXPECT_EQ(stepsTo(rows), 0u);
    std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    EXPECT_EQ(stepsTo(rows), 2u) << "one row moved";
    rows[3].value = 1;
    EXPECT_EQ(stepsTo(rows), 1u);
    list.update(3, rows[3]);
    EXPECT_EQ(follower.steps, 1u) << "nothing changed";
    EXPECT_EQ(follower.resets, 0u);
    for (std::size_t i = 0; i < rows.size(); i += 2)
        rows[i].name += "x";
    EXPECT_EQ(stepsTo(rows), 1u);
    rows[1] = rows[0];
    EXPECT_EQ(stepsTo(rows), 1u) << "a duplicate key";
    EXPECT_EQ(follower.resets, 2u);
}

} // namespace
} // namespace tidwen
