#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "framework/CountingSource.h"
#include "framework/FaultSource.h"
#include "framework/FileSource.h"
#include "framework/LatchSource.h"
#include "framework/MemorySource.h"
#include "framework/SourceDecorators.h"

namespace orvel::host {
namespace {

// Byte n of the source is n.
std::vector<uint8_t> counted(size_t size) {
    std::vector<uint8_t> bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i);
    return bytes;
}

/** Reads through the C table, and checks the bytes of counted(). */
ssize_t readCounted(DataSource& source, off64_t offset, size_t size) {
    std::vector<uint8_t> buffer(size + 1, 0xEE);
    android::CDataSource* table = source.table();
    const ssize_t count = table->readAt(table->handle, offset, buffer.data(), size);
    for (ssize_t i = 0; i < count; ++i) {
        EXPECT_EQ(buffer[i], static_cast<uint8_t>(offset + i));
    }
    EXPECT_EQ(buffer[count > 0 ? count : 0], 0xEE) << "written behind the bytes delivered";
    return count;
}

class TempPath {
  public:
    explicit TempPath(const char* name)
        : mPath(testing::TempDir() + std::to_string(getpid()) + name) {
        remove(mPath.c_str());
    }
    ~TempPath() { remove(mPath.c_str()); }
    const std::string& str() const { return mPath; }

  private:
    std::string mPath;
};

TEST(FileSource, sparseFileOver4GiB_isReadAtTheRightPlace) {
    constexpr off64_t kFar = (off64_t{5} << 30) + 3;
    TempPath path("sparse");
    const int fd = open(path.str().c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    ASSERT_EQ(pwrite64(fd, "marker", 6, kFar), 6);
    close(fd);

    FileSource source(path.str());
    off64_t size = 0;
    EXPECT_EQ(source.getSize(&size), android::OK);
    EXPECT_EQ(size, kFar + 6);
    char text[16] = {};
    EXPECT_EQ(source.readAt(kFar - 2, text, sizeof(text)), 8);
    EXPECT_EQ(std::string(text, 8), std::string("\0\0marker", 8));
    EXPECT_EQ(source.readAt(kFar + 6, text, 1), 0);
    EXPECT_EQ(source.readAt(-1, text, 1), android::BAD_VALUE);
    // Cut behind its back: what is gone reads as the end.
    ASSERT_EQ(truncate64(path.str().c_str(), kFar + 2), 0);
    EXPECT_EQ(source.readAt(kFar, text, 6), 2);
    EXPECT_EQ(source.readAt(kFar + 4, text, 2), 0);

    char uri[4096];
    ASSERT_TRUE(source.getUri(uri, sizeof(uri)));
    EXPECT_EQ(uri, "file://" + path.str());
    EXPECT_FALSE(source.getUri(uri, path.str().size()));
}

TEST(FileSource, whatCannotBeRead_isRefusedWithFileAndReason) {
    TempPath pipe("pipe");
    ASSERT_EQ(mkfifo(pipe.str().c_str(), 0600), 0);
    const struct {
        std::string path, reason;
    } cases[] = {
            {testing::TempDir() + "no-such-file", "cannot be found: No such file or directory"},
            {testing::TempDir(), "is a folder"},
            {pipe.str(), "is not a regular file"},
    };
    for (const auto& c : cases) {
        try {
            FileSource source(c.path);
            ADD_FAILURE() << c.path << " was opened";
        } catch (const SourceError& error) {
            EXPECT_NE(std::string(error.what()).find(c.path + ": " + c.reason), std::string::npos)
                    << error.what();
        }
    }
}

TEST(DataSource, exceptionInAnOperation_becomesAStatus) {
    struct Throwing : DataSource {
        ssize_t readAt(off64_t, void*, size_t) override { throw std::runtime_error("read"); }
        android::status_t getSize(off64_t* size) override {
            *size = 5;
            throw std::runtime_error("size");
        }
        uint32_t flags() override { throw 1; }
        bool getUri(char*, size_t) override { throw 1; }
    } source;
    android::CDataSource* table = source.table();
    off64_t size = 0;
    char byte;
    EXPECT_EQ(table->readAt(table->handle, 0, &byte, 1), android::ERROR_IO);
    EXPECT_LT(table->getSize(table->handle, &size), 0);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(table->flags(table->handle), 0u);
    EXPECT_FALSE(table->getUri(table->handle, &byte, 1));
}

TEST(FaultSource, faultsFallOnExactlyTheReadsConcerned) {
    using Repeat = Fault::Repeat;
    struct Step {
        off64_t offset;
        size_t size;
        ssize_t result;
    };
    constexpr ssize_t kIo = android::ERROR_IO;
    const struct {
        const char* name;
        Fault fault;
        std::vector<Step> steps;
    } cases[] = {
            {"offset, for good",
             Fault::at(50),
             {{0, 50, 50}, {0, 51, kIo}, {50, 1, kIo}, {51, 9, 9}, {50, 0, 0}, {40, 20, kIo}}},
            {"offset, once", Fault::at(50, Repeat::Once), {{0, 50, 50}, {45, 9, kIo}, {45, 9, 9}}},
            {"call, for good", Fault::onCall(2), {{0, 9, 9}, {9, 9, kIo}, {0, 9, kIo}}},
            {"call, once", Fault::onCall(2, Repeat::Once), {{0, 9, 9}, {9, 9, kIo}, {9, 9, 9}}},
            {"zero bytes", Fault::onCall(2, Repeat::ForGood, 0), {{0, 9, 9}, {9, 9, 0}}},
            {"largest size", Fault::at(99), {{0, SIZE_MAX, kIo}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        MemorySource memory(counted(100));
        FaultSource source(memory, c.fault);
        uint64_t faults = 0;
        for (const Step& step : c.steps) {
            if (step.size == SIZE_MAX) {
                EXPECT_EQ(source.readAt(step.offset, nullptr, step.size), step.result);
            } else {
                EXPECT_EQ(readCounted(source, step.offset, step.size), step.result);
            }
            faults += step.result == kIo || (step.result == 0 && step.size > 0);
        }
        EXPECT_EQ(source.faults(), faults);
        EXPECT_EQ(source.calls(), c.steps.size());
    }
}

TEST(FaultSource, changedSize_showsFromItsCallOnAndCutsReads) {
    MemorySource memory(counted(100));
    FaultSource source(memory, SizeChange{2, 60});
    off64_t size = 0;
    EXPECT_EQ(readCounted(source, 50, 20), 20);
    EXPECT_EQ(source.getSize(&size), android::OK);
    EXPECT_EQ(size, 100);
    EXPECT_EQ(readCounted(source, 50, 20), 10);
    EXPECT_EQ(readCounted(source, 60, 20), 0);
    EXPECT_EQ(source.getSize(&size), android::OK);
    EXPECT_EQ(size, 60);
}

TEST(CountingSource, stackedDecorators_countWhatReachesTheSource) {
    MemorySource memory(counted(100));
    CountingSource counting(memory, true);
    UnknownSizeSource unknown(counting);
    ShortReadSource source(unknown, 7);
    EXPECT_EQ(readCounted(source, 10, 20), 7);   // first: no jump
    EXPECT_EQ(readCounted(source, 17, 3), 3);    // goes on
    EXPECT_EQ(readCounted(source, 17, 1), 1);    // jump back
    EXPECT_EQ(readCounted(source, 98, 20), 2);   // jump ahead, ends early
    EXPECT_EQ(readCounted(source, 100, 20), 0);  // goes on, at the end
    EXPECT_EQ(readCounted(source, 100, 20), 0);  // still there
    off64_t size = 0;
    EXPECT_EQ(source.getSize(&size), android::ERROR_UNSUPPORTED);
    EXPECT_LT(size, 0);
    const SourceCounts counts = counting.counts();
    EXPECT_EQ(counts.calls, 6u);
    EXPECT_EQ(counts.jumps, 2u);
    EXPECT_EQ(counts.bytes, 13u);
    EXPECT_EQ(counts.sizeCalls, 0u);
    const auto reads = counting.reads();
    ASSERT_EQ(reads.size(), 6u);
    EXPECT_EQ(reads[3].offset, 98);
    EXPECT_EQ(reads[3].length, 7u);
    EXPECT_EQ(reads[3].result, 2);

    counting.reset();
    EXPECT_EQ(readCounted(source, 40, 1), 1);
    EXPECT_EQ(counting.counts().jumps, 0u);
    EXPECT_EQ(counting.reads().size(), 1u);
}

TEST(CountingSource, readsOfSeveralThreads_allCount) {
    MemorySource memory(counted(100));
    CountingSource counting(memory);
    FaultSource source(counting, Fault::onCall(2000, Fault::Repeat::Once));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 1000; ++n)
                readCounted(source, n % 90, 3);
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(source.calls(), 4000u);
    EXPECT_EQ(source.faults(), 1u);
    EXPECT_EQ(counting.counts().calls, 3999u);
    EXPECT_EQ(counting.counts().bytes, 3u * 3999u);
}

TEST(LatchSource, destruction_letsTheReadGo) {
    MemorySource memory(counted(100));
    std::thread reader;
    {
        LatchSource source(memory);
        source.armAtOffset(50);
        EXPECT_EQ(readCounted(source, 40, 10), 10);
        reader = std::thread([&] { EXPECT_EQ(readCounted(source, 45, 6), 6); });
        EXPECT_TRUE(source.waitUntilBlocked());
    }
    reader.join();
}

}  // namespace
}  // namespace orvel::host
