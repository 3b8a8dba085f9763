#include <fcntl.h>
#include <gtest/gtest.h>
#include <media/stagefright/MediaErrors.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "framework/FileSource.h"

namespace orvel::host {
namespace {

TEST(FileSource, sparseFileOver4GiBIsReadAtTheRightPlace) {
    constexpr off64_t kFar = (off64_t{5} << 30) + 3;
    const std::string path = testing::TempDir() + std::to_string(getpid()) + "sparse";
    const int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    ASSERT_EQ(pwrite64(fd, "marker", 6, kFar), 6);
    close(fd);

    FileSource source(path);
    off64_t size = 0;
    EXPECT_EQ(source.getSize(&size), android::OK);
    EXPECT_EQ(size, kFar + 6);
    char text[16] = {};
    EXPECT_EQ(source.readAt(kFar - 2, text, sizeof(text)), 8);
    EXPECT_EQ(std::string(text, 8), std::string("\0\0marker", 8));
    EXPECT_EQ(source.readAt(kFar + 6, text, 1), 0);
    EXPECT_EQ(source.readAt(-1, text, 1), android::BAD_VALUE);
    // Cut behind its back: what is gone reads as the end.
    ASSERT_EQ(truncate64(path.c_str(), kFar + 2), 0);
    EXPECT_EQ(source.readAt(kFar, text, 6), 2);
    EXPECT_EQ(source.readAt(kFar + 4, text, 2), 0);

    char uri[4096];
    ASSERT_TRUE(source.getUri(uri, sizeof(uri)));
    EXPECT_EQ(uri, "file://" + path);
    EXPECT_FALSE(source.getUri(uri, path.size()));
    remove(path.c_str());
}

TEST(DataSource, exceptionInAnOperationBecomesAStatus) {
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

}  // namespace
}  // namespace orvel::host
