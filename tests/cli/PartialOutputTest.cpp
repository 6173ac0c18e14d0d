#include "cli/PartialOutput.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/format/GoldenMovie.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::cli {
namespace {

namespace golden = test::golden;

class PartialOutputTest : public ::testing::Test {
protected:
    void put(const golden::Bytes& bytes) { test::store(m_path, bytes); }
    std::uintmax_t fileSize() const { return std::filesystem::file_size(m_path); }
    bool exists() const { return std::filesystem::exists(m_path); }

    test::TemporaryFolder m_folder;
    std::string m_path = m_folder.file("a.zeb");
    PartialOutput m_output{m_path};
};

TEST_F(PartialOutputTest, LeavesAloneWhatIsNotItsOwn) {
    // An old movie that the run never came to replace.
    put(golden::unfinishedMovie());
    m_output.noteCreated();
    EXPECT_EQ(m_output.settle().text, "");
    EXPECT_EQ(fileSize(), golden::unfinishedMovie().size());

    // A movie that someone else put there before the run created its own.
    m_output.noteReplaced();
    EXPECT_EQ(m_output.settle().text, "");
    EXPECT_TRUE(exists());

    // One that someone else put there afterwards.
    m_output.noteCreated();
    std::filesystem::rename(m_path, m_folder.file("moved"));
    put({});
    EXPECT_NE(m_output.settle().text, "");
    EXPECT_TRUE(exists());

    // Nothing there any more.
    std::filesystem::remove(m_path);
    EXPECT_EQ(m_output.settle().text, "");
}

}  // namespace
}  // namespace zeb::cli
