#include "platform/files/OutputPlace.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using Case = OutputError::Case;
using enum OutputTerms::Existing;
using enum OutputTerms::MissingFolder;
using testing::ElementsAre;

/// A file system in which the n-th change fails.
class FailingFileSystem final : public OutputFileSystem {
public:
    std::unique_ptr<WritableFile> create(const std::string& path) override {
        mayFail(path);
        return OutputFileSystem::create(path);
    }
    bool moveToFreePlace(const std::string& from, const std::string& to) override {
        mayFail(to);
        return OutputFileSystem::moveToFreePlace(from, to);
    }
    void moveFile(const std::string& from, const std::string& to) override {
        mayFail(to);
        OutputFileSystem::moveFile(from, to);
    }
    void removeFile(const std::string& path) override {
        mayFail(path);
        OutputFileSystem::removeFile(path);
    }
    void makeFolder(const std::string& folder) override {
        mayFail(folder);
        OutputFileSystem::makeFolder(folder);
    }

    int calls = 0;
    int failing = 0;  ///< number of the failing call, from 1

private:
    void mayFail(const std::string& path) {
        if (++calls == failing) throw FileError(path, EIO);
    }
};

class OutputPlaceTest : public testing::Test {
protected:
    void write(OutputPlace& place) {
        const auto file = place.create();
        file->write(std::vector<std::uint8_t>{'n', 'e', 'w'});
        file->close();
    }
    std::string at(const std::string& name) const { return test::contents(folder.file(name)); }

    test::TemporaryFolder folder;
    const std::string path = folder.file("film.zeb");
};

TEST_F(OutputPlaceTest, ReportsWhyOutputIsNotAllowed) {
    test::store(folder.file("file"), "");
    fs::create_directory(folder.file("folder"));
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    for (const char* target : {"file", "folder", "pipe", "nothing"})
        fs::create_symlink(target, folder.file(std::string("to ") + target));
    const struct {
        std::string name;
        std::optional<Case> keeping, replacing;
    } cases[] = {
        {"nothing", {}, {}},
        {"file", Case::exists, {}},
        {"to file", Case::exists, {}},
        {"to nothing", Case::exists, {}},
        {"folder", Case::isFolder, Case::isFolder},
        {"to folder", Case::isFolder, Case::isFolder},
        {"nothing/", Case::isFolder, Case::isFolder},
        {"pipe", Case::notRegular, Case::notRegular},
        {"to pipe", Case::notRegular, Case::notRegular},
        {"nothing/a", Case::noFolder, Case::noFolder},
        {"file/a", Case::notAFolder, Case::notAFolder},
        {"to folder/a", {}, {}},
    };
    const auto before = folder.names();
    for (const auto& [name, keeping, replacing] : cases) {
        for (const auto existing : {keep, replace}) {
            std::optional<Case> found;
            try {
                OutputPlace(folder.file(name), {existing, refuse}).check();
            } catch (const OutputError& error) {
                found = error.errorCase();
                EXPECT_EQ(error.path(), folder.file(name));
            }
            EXPECT_EQ(found, existing == keep ? keeping : replacing) << name;
        }
    }
    EXPECT_THROW(OutputPlace("").check(), OutputError);
    fs::create_hard_link(folder.file("file"), folder.file("same"));
    EXPECT_THROW(OutputPlace(folder.file("to file"), {replace, refuse}).check(folder.file("same")),
                 OutputError);
    fs::remove(folder.file("same"));
    EXPECT_NO_THROW(OutputPlace(folder.file("new/a"), {keep, make}).check());
    EXPECT_THROW(OutputPlace(folder.file("new/too/a"), {keep, make}).check(), OutputError);
    EXPECT_EQ(folder.names(), before);
}

TEST_F(OutputPlaceTest, KeepsOldFileUntilNewIsComplete) {
    const std::string longName = std::string(246, 'x') + "\u00fc.zeb";
    for (const std::string& name : {std::string("film.zeb"), std::string(".film"), longName}) {
        const std::string place = folder.file(name);
        test::store(place, "old");
        OutputPlace output(place, {replace, refuse});
        output.setAside();
        EXPECT_FALSE(fs::exists(place));
        const std::string previous = output.previousPath();
        EXPECT_EQ(test::contents(previous), "old");
        write(output);
        output.commit();
        EXPECT_EQ(test::contents(place), "new");
        EXPECT_FALSE(fs::exists(previous));
        fs::remove(place);
    }
    // Existing names are skipped. A link itself is set aside, not its target.
    test::store(folder.file("film.previous.zeb"), "first");
    test::store(folder.file("target"), "old");
    fs::create_symlink("target", path);
    OutputPlace output(path, {replace, refuse});
    output.setAside();
    EXPECT_EQ(output.previousPath(), folder.file("film.previous-2.zeb"));
    EXPECT_TRUE(fs::is_symlink(output.previousPath()));
    write(output);
    output.putBack();
    EXPECT_EQ(fs::read_symlink(path), "target");
    EXPECT_EQ(at("film.previous.zeb"), "first");
    EXPECT_THAT(folder.names(), ElementsAre("film.previous.zeb", "film.zeb", "target"));
}

TEST_F(OutputPlaceTest, DestructionRestoresUnreplacedFile) {
    test::store(path, "old");
    { OutputPlace(path, {replace, refuse}).setAside(); }
    EXPECT_EQ(at("film.zeb"), "old");
    {
        OutputPlace output(path, {replace, refuse});
        output.setAside();
        write(output);
    }
    EXPECT_EQ(at("film.zeb"), "new") << "it may hold whole seconds";
    EXPECT_EQ(at("film.previous.zeb"), "old");

    OutputPlace made(folder.file("new/a"), {keep, make});
    write(made);
    made.putBack();
    EXPECT_FALSE(fs::exists(folder.file("new")));
}

/// Success is reported only if the output is still the file that was created. Files of other processes stay.
TEST_F(OutputPlaceTest, LeavesFilesOfOtherProcessesAlone) {
    const auto putTheirs = [this] { fs::remove(path), test::store(path, "theirs"); };
    const struct {
        bool isEarly;  ///< before the file is created
        std::function<void()> happens;
        Case expected;
        std::string left, leftOfOld;  ///< content of the output path without and with an old file
    } cases[] = {
        {true, putTheirs, Case::appeared, "theirs", "theirs"},
        {false, [this] { fs::remove(path); }, Case::removed, "", "old"},
        {false, [this] { fs::rename(path, folder.file("moved")); }, Case::removed, "", "old"},
        {false, putTheirs, Case::replaced, "theirs", "theirs"},
    };
    for (const auto& [isEarly, happens, expected, left, leftOfOld] : cases) {
        for (const bool hasOld : {false, true}) {
            fs::remove(path);
            fs::remove(folder.file("film.previous.zeb"));
            if (hasOld) test::store(path, "old");
            OutputPlace output(path, {hasOld ? replace : keep, refuse});
            output.setAside();
            std::optional<Case> error;
            try {
                if (isEarly) happens();
                write(output);
                if (!isEarly) happens();
                output.commit();
            } catch (const OutputError& failure) {
                error = failure.errorCase();
            }
            EXPECT_EQ(error, expected);
            output.putBack();
            EXPECT_EQ(at("film.zeb"), hasOld ? leftOfOld : left);
            EXPECT_EQ(at("film.previous.zeb"), hasOld && left == "theirs" ? "old" : "");
        }
    }
}

/// After any failing change the old file still exists, in its place or set aside, unless the new file is
/// complete. `previousPath` is where the old file is.
TEST_F(OutputPlaceTest, AnyFailingChangeLosesNoFile) {
    for (const bool succeeds : {true, false}) {
        for (int failing = 1;; ++failing) {
            SCOPED_TRACE("call " + std::to_string(failing) + (succeeds ? ", commit" : ", put back"));
            fs::remove(path);
            fs::remove(folder.file("film.previous.zeb"));
            test::store(path, "old");
            FailingFileSystem files;
            files.failing = failing;
            bool isComplete = false;
            {
                OutputPlace output(path, {replace, refuse}, files);
                try {
                    output.setAside();
                    write(output);
                    if (succeeds) {
                        output.commit();
                        isComplete = true;
                    } else {
                        output.putBack();
                    }
                } catch (const FileError& error) {
                    EXPECT_EQ(error.code(), EIO);
                }
                if (!output.previousPath().empty()) {
                    EXPECT_EQ(test::contents(output.previousPath()), "old");
                }
            }
            if (isComplete) {
                EXPECT_EQ(at("film.zeb"), "new");
            } else {
                EXPECT_TRUE(at("film.zeb") == "old" || at("film.previous.zeb") == "old");
                EXPECT_TRUE(failing > 2 || at("film.zeb") == "old") << "nothing was created";
            }
            if (files.calls < failing) {
                EXPECT_THAT(folder.names(), ElementsAre("film.zeb"));
                break;
            }
        }
    }
}

}  // namespace
}  // namespace zeb
