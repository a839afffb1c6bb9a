// Copy-on-write of Vector, List and Map: sharing, detaching, iterator validity.
#include <nuv/core/Color.h>
#include <nuv/core/List.h>
#include <nuv/core/Map.h>
#include <nuv/core/Vector.h>
#include <nuv/core/image/SegmentList.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace nuv::core;

// Two lists share their data exactly when their first elements are the same object.
template <typename T>
bool sameData(List<T> const& a, List<T> const& b) {
    return &*a.constBegin() == &*b.constBegin();
}

TEST(Vector, CopyIsIndependentAfterAppend) {
    Vector<int> a;
    Vector<int> b(a);
    b.append(1);
    EXPECT_EQ(a.size(), 0);
    EXPECT_EQ(b.size(), 1);
    EXPECT_EQ(b[0], 1);
}

TEST(Vector, CopiesShareUntilWritten) {
    Vector<int> a{1, 2, 3};
    Vector<int> b(a);
    EXPECT_EQ(b.constData(), a.constData());
    Vector<int> const& cb = b;
    EXPECT_EQ(cb[1], 2);
    EXPECT_EQ(cb.at(2), 3);
    EXPECT_EQ(b.constData(), a.constData());  // const reads do not detach
    b[0] = 10;
    EXPECT_NE(b.constData(), a.constData());
    EXPECT_EQ(a[0], 1);
    EXPECT_EQ(b[0], 10);
}

TEST(Vector, NonConstIndexDetachesEvenWithoutAWrite) {
    Vector<int> a{1, 2, 3};
    Vector<int> b = a;
    int const value = b[1];  // b is not const: this counts as a write
    EXPECT_EQ(value, 2);
    EXPECT_NE(b.constData(), a.constData());
}

TEST(Vector, ValueIsTheCheckedRead) {
    Vector<Color> v;
    EXPECT_EQ(v.value(0), Color());
    Color const c(0x11223344u);
    EXPECT_EQ(v.value(-1, c), c);
    v << Color(1u) << Color(2u);
    EXPECT_EQ(v.value(1), Color(2u));
    EXPECT_EQ(v.value(2, c), c);
    EXPECT_EQ(v.value(-1), Color());
    EXPECT_EQ(v.count(), 2);
}

TEST(Vector, ValueDoesNotDetach) {
    Vector<int> a{4, 5};
    Vector<int> const b(a);
    EXPECT_EQ(b.value(1), 5);
    EXPECT_EQ(b.value(9, 7), 7);
    EXPECT_EQ(b.constData(), a.constData());
}

TEST(Vector, NegativeResizeLeavesASharedVectorShared) {
    Vector<int> a{1, 2, 3};
    Vector<int> b(a);
    b.resize(-1, 9);
    EXPECT_EQ(b.size(), 3);
    EXPECT_EQ(b.constData(), a.constData());
    b.resize(5, 9);
    EXPECT_NE(b.constData(), a.constData());
    EXPECT_EQ(a.size(), 3);
    EXPECT_EQ(b.size(), 5);
    EXPECT_EQ(b[4], 9);
    b.resize(0);
    EXPECT_TRUE(b.isEmpty());
}

TEST(Vector, ClearOfASharedVectorLeavesTheOther) {
    Vector<std::string> a{"x", "y"};
    Vector<std::string> b(a);
    b.clear();
    EXPECT_EQ(b.size(), 0);
    EXPECT_EQ(a.size(), 2);
    EXPECT_EQ(a[1], "y");
}

TEST(Vector, AssignmentSharesAndEqualityComparesElements) {
    Vector<unsigned char> a{1, 2};
    Vector<unsigned char> b;
    b = a;
    EXPECT_EQ(b.constData(), a.constData());
    EXPECT_TRUE(a == b);
    Vector<unsigned char> c{1, 2};
    EXPECT_TRUE(a == c);
    c.append(3);
    EXPECT_TRUE(a != c);
}

TEST(List, AppendReturnsTheNewElement) {
    List<int> list;
    List<int>::iterator it = list.append(5);
    EXPECT_EQ(*it, 5);
    it = list.append(6);
    EXPECT_EQ(*it, 6);
    list << 7;
    EXPECT_EQ(list.size(), 3);
    EXPECT_EQ(list.last(), 7);
    EXPECT_EQ(list.first(), 5);
}

TEST(List, ConstIterationOnASharedListDoesNotDetach) {
    List<int> a{1, 2, 3};
    List<int> b(a);
    EXPECT_TRUE(sameData(a, b));
    int sum = 0;
    for (List<int>::const_iterator it = b.constBegin(); it != b.constEnd(); ++it) sum += *it;
    List<int> const& cb = b;
    for (int v : cb) sum += v;
    EXPECT_EQ(sum, 12);
    EXPECT_TRUE(sameData(a, b));
}

TEST(List, EmptySharedListHasEqualConstEnds) {
    List<std::string> a;
    List<std::string> b(a);
    EXPECT_TRUE(b.constBegin() == b.constEnd());
    EXPECT_TRUE(a.constBegin() == a.constEnd());
    // Still shared: the end iterators of one std::list.
    EXPECT_TRUE(a.constEnd() == b.constEnd());
    b.append("x");
    EXPECT_TRUE(a.constBegin() == a.constEnd());
}

TEST(List, NonConstBeginCopiesASharedList) {
    List<int> a{1, 2, 3};
    List<int> b(a);
    List<int>::iterator it = b.begin();
    EXPECT_FALSE(sameData(a, b));
    *it = 100;
    EXPECT_EQ(a.first(), 1);
    EXPECT_EQ(b.first(), 100);
}

TEST(List, IteratorsOfAUniqueListSurviveAppends) {
    List<std::string> list;
    List<std::string>::iterator first = list.append("first");
    std::string const* address = &*first;
    for (int i = 0; i < 100; ++i) list.append(std::to_string(i));
    EXPECT_EQ(&*first, address);
    *first = "changed";
    EXPECT_EQ(list.first(), "changed");
    // begin() on a unique list does not move anything either.
    EXPECT_EQ(&*list.begin(), address);
}

TEST(List, EraseDetachesThenRemoves) {
    List<int> a{1, 2, 3};
    List<int> b(a);
    List<int>::iterator it = b.begin();  // detaches b
    ++it;
    it = b.erase(it);
    EXPECT_EQ(*it, 3);
    EXPECT_EQ(b.size(), 2);
    EXPECT_EQ(a.size(), 3);
    // On a unique list erase keeps the other iterators.
    List<int>::iterator keep = b.begin();
    int const* kept = &*keep;
    List<int>::iterator second = keep;
    ++second;
    b.erase(second);
    EXPECT_EQ(&*b.begin(), kept);
    EXPECT_EQ(b.size(), 1);
}

TEST(List, ElementsAreDeepCopiedOnDetachButTheirOwnListsShare) {
    using nuv::core::image::Segment;
    List<Segment> a;
    Segment segment;
    segment.lines.append(Line(1, 2, 3, 4));
    a.append(segment);
    List<Segment> b(a);
    List<Segment>::iterator it = b.begin();
    EXPECT_NE(&*it, &a.first());
    // The copied segment's lines are still the ones of the original until written.
    EXPECT_EQ(&*it->lines.constBegin(), &*a.first().lines.constBegin());
    it->lines.append(Line(5, 6, 7, 8));
    EXPECT_EQ(a.first().lines.size(), 1);
    EXPECT_EQ(b.first().lines.size(), 2);
}

TEST(List, EqualityComparesElementsInOrder) {
    List<int> a{1, 2};
    List<int> b{1, 2};
    List<int> c{2, 1};
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a != c);
    b.clear();
    EXPECT_TRUE(b.isEmpty());
    EXPECT_EQ(a.size(), 2);
}

TEST(Map, ValueNeverInsertsAndIndexDoes) {
    Map<unsigned, unsigned> m;
    EXPECT_EQ(m.value(7, 9), 9u);
    EXPECT_TRUE(m.isEmpty());
    EXPECT_EQ(m.value(7), 0u);
    EXPECT_EQ(m.size(), 0);
    EXPECT_EQ(m[7], 0u);
    EXPECT_EQ(m.size(), 1);
    m[7] = 3;
    EXPECT_EQ(m.value(7, 9), 3u);
    EXPECT_TRUE(m.contains(7));
    EXPECT_FALSE(m.contains(8));
}

TEST(Map, CopiesShareUntilIndexed) {
    Map<int, std::string> a;
    a[1] = "one";
    a[2] = "two";
    Map<int, std::string> b(a);
    EXPECT_EQ(&b.constBegin()->second, &a.constBegin()->second);
    EXPECT_EQ(b.value(2), "two");
    EXPECT_EQ(b.find(1)->second, "one");
    EXPECT_EQ(&b.constBegin()->second, &a.constBegin()->second);
    std::string const read = b[1];  // a write as far as sharing goes
    EXPECT_EQ(read, "one");
    EXPECT_NE(&b.constBegin()->second, &a.constBegin()->second);
    b[1] = "uno";
    EXPECT_EQ(a.value(1), "one");
    EXPECT_EQ(b.value(1), "uno");
}

TEST(Map, IteratorsOfAUniqueMapSurviveInsertions) {
    Map<unsigned, List<int>::iterator> index;
    List<int> list;
    for (int i = 0; i < 50; ++i) index[static_cast<unsigned>(i)] = list.append(i);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(*index.value(static_cast<unsigned>(i)), i);
    Map<int, int> m;
    m[5] = 50;
    Map<int, int>::const_iterator five = m.find(5);
    for (int i = 0; i < 100; ++i) m[i * 7] = i;
    EXPECT_EQ(five->first, 5);
    EXPECT_EQ(five->second, 50);
}

TEST(Map, RemoveAndClear) {
    Map<int, int> a;
    a[1] = 1;
    a[2] = 2;
    Map<int, int> b(a);
    EXPECT_EQ(b.remove(3), 0);
    EXPECT_EQ(&b.constBegin()->second, &a.constBegin()->second);  // nothing to remove: shared
    EXPECT_EQ(b.remove(1), 1);
    EXPECT_EQ(b.size(), 1);
    EXPECT_EQ(a.size(), 2);
    b.insert(9, 90);
    EXPECT_EQ(b.value(9), 90);
    a.clear();
    EXPECT_TRUE(a.isEmpty());
    EXPECT_EQ(b.size(), 2);
    EXPECT_TRUE(a.constBegin() == a.constEnd());
}

TEST(Containers, DerivedListsUseTheBaseBehaviour) {
    nuv::core::image::SegmentList segments;
    EXPECT_TRUE(segments.isEmpty());
    nuv::core::image::Segment segment;
    segment.segmentIndex = 3;
    segments.append(segment);
    nuv::core::image::SegmentList copy(segments);
    EXPECT_EQ(&copy.first(), &segments.first());
    copy.begin()->segmentIndex = 4;
    EXPECT_EQ(segments.first().segmentIndex, 3);
    EXPECT_EQ(copy.first().segmentIndex, 4);
    // Destroyed through the base: the destructor is virtual.
    List<nuv::core::image::Segment>* base = new nuv::core::image::SegmentList(copy);
    delete base;
    EXPECT_EQ(copy.size(), 1);
}

}  // namespace
