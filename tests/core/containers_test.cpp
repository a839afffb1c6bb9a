// Copy-on-write of Vector, List, Map and the segment records: sharing, detaching, iterators.
#include <nuv/core/Color.h>
#include <nuv/core/List.h>
#include <nuv/core/Map.h>
#include <nuv/core/Vector.h>
#include <nuv/core/image/Image.h>
#include <nuv/core/image/SegmentList.h>
#include <nuv/core/variant/Variant.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace nuv::core;
using nuv::core::image::Segment;
using nuv::core::image::SegmentList;

template <typename L>
bool shared(L const& a, L const& b) {
    return &*a.constBegin() == &*b.constBegin();
}

// Const reads share; a non-const index or resize detaches; value() is the checked read.
TEST(Vector, SharesUntilANonConstAccess) {
    Vector<int> a{1, 2, 3};
    Vector<int> const b(a);
    EXPECT_EQ(b[1] * 100 + b.at(2) * 10 + b.value(1), 232);
    EXPECT_EQ(b.value(3, 7) + b.value(-1), 7);
    EXPECT_EQ(b.constData(), a.constData());
    Vector<int> c(a);
    c.resize(-1, 9);  // refused: still shared
    EXPECT_EQ(c.constData(), a.constData());
    EXPECT_EQ(c[0], 1);  // a non-const index counts as a write
    EXPECT_NE(c.constData(), a.constData());
    c.resize(5, 9);
    c[0] = 10;
    EXPECT_EQ(a, (Vector<int>{1, 2, 3}));
    EXPECT_TRUE(c == (Vector<int>{10, 2, 3, 9, 9}) && a != c);
    Vector<std::string> s{"x", "y"}, t(s);
    t.clear();
    EXPECT_TRUE(s.size() == 2 && t.isEmpty());
}

// Const iteration shares; begin() detaches; on a unique list append, begin and erase keep
// the iterators of the other elements.
TEST(List, SharingAndIterators) {
    List<int> a{1, 2, 3}, b(a);
    int sum = 0;
    for (int v : static_cast<List<int> const&>(b)) sum += v;
    EXPECT_EQ(sum, 6);
    EXPECT_TRUE(shared(a, b));
    *b.begin() = 100;
    EXPECT_FALSE(shared(a, b));
    EXPECT_TRUE(a == (List<int>{1, 2, 3}) && a != b && b.first() == 100);
    EXPECT_EQ(*b.erase(++b.begin()), 3);
    EXPECT_EQ(a.size() * 10 + b.size(), 32);
    List<std::string> list;
    std::string const* address = &*list.append("first");
    for (int i = 0; i < 100; ++i) EXPECT_EQ(*list.append(std::to_string(i)), std::to_string(i));
    list << "last";
    List<std::string>::iterator second = list.begin();
    EXPECT_EQ(*list.erase(++second), "1");
    EXPECT_EQ(&*list.begin(), address);
    EXPECT_EQ(list.size(), 101);
    EXPECT_EQ(list.last(), "last");
}

TEST(Map, ValueNeverInsertsAndIndexDetaches) {
    Map<int, std::string> a;
    EXPECT_EQ(a.value(7, "none"), "none");
    EXPECT_TRUE(a.isEmpty());
    EXPECT_EQ(a[1], "");
    a[1] = "one";
    a.insert(2, "two");
    Map<int, std::string> b(a);
    EXPECT_EQ(b.value(2) + b.find(1)->second, "twoone");
    EXPECT_TRUE(b.contains(2) && !b.contains(3) && b.remove(3) == 0);
    EXPECT_EQ(&b.constBegin()->second, &a.constBegin()->second);
    b[1] = "uno";
    EXPECT_EQ(a.value(1) + b.value(1), "oneuno");
    EXPECT_EQ(b.remove(1), 1);
    a.clear();
    EXPECT_TRUE(a.constBegin() == a.constEnd() && b.size() == 1);
    Map<int, int> m;
    m[5] = 50;
    Map<int, int>::const_iterator five = m.find(5);
    for (int i = 0; i < 100; ++i) m[i * 7] = i;
    EXPECT_EQ(five->second, 50);
}

// Segments copy memberwise; their lines and the lists holding them share until written.
TEST(SegmentRecords, CopiesShareUntilWritten) {
    Segment s;
    EXPECT_EQ(s, Segment(s));
    EXPECT_TRUE(s.pixelCount == 0 && s.color == Color() && s.center == Point() &&
                s.segmentIndex == 0 && s.lines.isEmpty() && s.name.empty());
    s.center = Point(3, 4);
    s.lines.append(Line(0, 0, 5, 0));
    s.name = "ball";
    SegmentList list;
    list.append(s);
    SegmentList copy(list);
    EXPECT_EQ(&copy.first(), &list.first());
    Segment& mine = *copy.begin();
    EXPECT_EQ(mine, s);
    EXPECT_EQ(&*mine.lines.constBegin(), &*list.first().lines.constBegin());
    mine.lines.append(Line(0, 1, 5, 1));
    EXPECT_NE(mine, s);
    EXPECT_EQ(list.first().lines.size(), 1);
    List<Segment>* base = new SegmentList(copy);  // the destructor is virtual
    delete base;
    bool ok = false;
    EXPECT_EQ(&variant::Variant(list).get<SegmentList>(&ok).first(), &list.first());
    EXPECT_TRUE(ok);
}

}  // namespace
