#include <gtest/gtest.h>
#include <tessel/foundation/containers.h>

#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

/// Counts its copies.
using Element = std::shared_ptr<int>;

std::string Text(const CList<char>& list) {
    return {list.begin(), list.end()};
}

struct SameBucket {
    std::size_t operator()(int) const { return 0; }
};

} // namespace

TEST(List, KeepsItsOrderWhenElementsAreAddedAndRemoved) {
    CList<char> list;
    for (const char letter : {'b', 'c', 'd'}) list.AddTail(letter);
    list.AddHead('a');
    CList<char> copy(list);
    EXPECT_EQ(copy.RemoveIf([](char letter) { return letter == 'a' || letter == 'd'; }), 2u);
    EXPECT_EQ(Text(copy), "bc");
    EXPECT_EQ(*std::prev(copy.end()), 'c');
    copy.AddTail('e');
    CList<char> moved(std::move(copy));
    copy = list;
    list.RemoveAll();
    EXPECT_EQ(Text(moved) + '|' + Text(copy) + '|' + Text(list), "bce|abcd|");
    copy = CList<char>();
    copy.AddHead('f');
    EXPECT_EQ(Text(copy) + std::to_string(moved.GetCount()), "f3");
}

TEST(Map, FindsWhatWasStoredAlsoInOneBucketAndAfterItHasGrown) {
    const Element kept = std::make_shared<int>();
    {
        CMap<int, Element> spread(2);
        CMap<int, Element, SameBucket> chained(0);
        Element found;
        const auto check = [&](auto& map) {
            EXPECT_FALSE(map.Lookup(0, found) || map.RemoveKey(0));
            for (int key = 0; key < 100; ++key) map.SetAt(key, std::make_shared<int>(key));
            map.SetAt(7, kept);
            auto copy = map;
            for (int key = 0; key < 100; ++key) {
                EXPECT_TRUE(map.Lookup(key, found) && *found == (key == 7 ? 0 : key)) << key;
                EXPECT_TRUE(map.RemoveKey(key) && !map.Lookup(key, found) && !map.RemoveKey(key)) << key;
            }
            EXPECT_TRUE(copy.Lookup(99, found) && *found == 99);
            map = copy;
            EXPECT_TRUE(map.Lookup(0, found));
        };
        check(spread);
        check(chained);
    }
    EXPECT_EQ(kept.use_count(), 1);
}

TEST(Array, GrowsToWhereAnElementIsSet) {
    CArray<int> array;
    array.SetSize(1, 4);
    EXPECT_EQ(array.Add(7), 1);
    array.SetAtGrow(3, 9);
    array.SetAtGrow(1, 8);
    CArray<int> copy;
    copy = array;
    array.RemoveAll();
    ASSERT_EQ(copy.GetSize() - array.GetSize(), 4);
    copy.ElementAt(2) += 1;
    EXPECT_EQ((std::vector{copy[0], copy[1], copy[2], copy[3]}), (std::vector{0, 8, 1, 9}));
}

TEST(Array, OwnsItsElementsAlsoWhileItMoves) {
    const Element kept = std::make_shared<int>();
    CArray<Element> array;
    array.SetSize(1, 1);
    array[0] = kept;
    array.Add(array[0]);
    array.SetAtGrow(5, array[0]);
    array.SetAtGrow(INT_MAX, array[0]);
    array.SetAtGrow(-1, array[0]);
    EXPECT_EQ(array.GetSize(), 6);
    EXPECT_EQ(kept.use_count(), 4);
    CArray<Element> copy(array);
    copy.SetSize(2);
    EXPECT_EQ(kept.use_count(), 6);
    copy = CArray<Element>();
    array.SetSize(0);
    EXPECT_EQ(kept.use_count(), 1);
}
