#include <media/stagefright/foundation/ABuffer.h>
#include <utils/KeyedVector.h>
#include <utils/SortedVector.h>
#include <utils/String8.h>
#include <utils/Vector.h>

#include "TestSupport.h"

using namespace android;

TEST(Vector, EditsKeepOrderAndCopyElements) {
    Vector<std::string> vector;
    for (const char* text : {"b", "d"})
        vector.push(text);
    EXPECT_EQ(vector.insertAt("a", 0), 0);
    EXPECT_EQ(vector.insertAt("c", 2), 2);
    EXPECT_EQ(vector.insertAt("x", 9), BAD_INDEX);
    vector.add(vector[0]);
    vector.editItemAt(4) += "!";
    Vector<std::string> copy = vector;
    EXPECT_EQ(vector.removeAt(1), 1);
    EXPECT_EQ(vector.removeItemsAt(3, 2), BAD_VALUE);
    std::string joined;
    for (const auto& text : vector)
        joined += text;
    for (const auto& text : copy)
        joined += text;
    EXPECT_EQ(joined, "acda!abcda!");
    vector.clear();
    EXPECT_TRUE(vector.isEmpty());
}

TEST(KeyedVector, IsOrderedByKeyAndReplaces) {
    KeyedVector<int, std::string> map;
    for (int key : {7, -1, 3, 7})
        map.add(key, std::to_string(key) + std::to_string(map.size()));
    ASSERT_EQ(map.size(), 3u);
    EXPECT_EQ(map.keyAt(0), -1);
    EXPECT_EQ(map.valueFor(7), "73");
    map.editValueFor(3) = "three";
    EXPECT_EQ(map.valueAt(1), "three");
    EXPECT_EQ(map.indexOfKey(4), NAME_NOT_FOUND);
    EXPECT_EQ(map.removeItem(4), NAME_NOT_FOUND);
    EXPECT_EQ(map.removeItem(3), 1);
    EXPECT_EQ(map.indexOfKey(7), 1);

    SortedVector<int> sorted;
    for (int value : {5, 1, 5, 3})
        sorted.add(value);
    ASSERT_EQ(sorted.size(), 3u);
    EXPECT_EQ(sorted.indexOf(3), 1);
    EXPECT_EQ(sorted.indexOf(4), NAME_NOT_FOUND);
    EXPECT_EQ(sorted.remove(1), 0);
    EXPECT_EQ(sorted[0], 3);
}

TEST(ContainersDeathTest, MissingKeyAndIndex_Abort) {
    KeyedVector<int, int> map;
    map.add(1, 1);
    EXPECT_DEATH(map.valueFor(2), "valueFor.*: key not found");
    EXPECT_DEATH(map.editValueFor(2), "editValueFor.*: key not found");
    EXPECT_DEATH(map.valueAt(1), "index=1 out of range \\(1\\)");
    EXPECT_DEATH(String8(static_cast<const char*>(nullptr)), "null given for a text");
    sp<ABuffer> buffer = new ABuffer(8);
    EXPECT_DEATH(buffer->setRange(4, 5),
                 "CHECK_LE\\( size,mCapacity - offset\\) failed: 5 vs\\. 4");
}

TEST(String8, BuildsAndCompares) {
    String8 text("ab");
    text.appendFormat("-%d-%s", 7, std::string(300, 'x').c_str());
    EXPECT_EQ(text.length(), 305u);
    EXPECT_EQ(strncmp(text, "ab-7-xxx", 8), 0);
    text.setTo("mov");
    EXPECT_TRUE(text == "mov" && text == String8::format("%s", "mov") && text != "mo");
    EXPECT_TRUE(String8().isEmpty() && String8("a", 1) < String8("b"));
}

TEST(ABuffer, RangeAndMemory) {
    sp<ABuffer> copy = ABuffer::CreateAsCopy("0123456789", 10);
    copy->setRange(2, 3);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(copy->data()), copy->size()), "234");
    EXPECT_EQ(copy->capacity(), 10u);
    copy->setRange(10, 0);
}
