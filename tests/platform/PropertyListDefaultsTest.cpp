#include "platform/settings/posix/PropertyListDefaults.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/settings/PropertyList.h"
#include "platform/settings/posix/PropertyListFile.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

PropertyDictionary listIn(const std::string& path) {
    return *propertyList::parse(test::contents<PropertyData>(path)).as<PropertyDictionary>();
}

/// The settings of one running program.
struct Instance {
    explicit Instance(const std::string& path)
        : observation(notifications.observe(userDefaultsDidChangeNotification,
                                            [this](const Notification&) { ++announcements; })),
          defaults(path, notifications, [this](const std::string& line) { warnings.push_back(line); }) {}

    NotificationCenter notifications;
    int announcements = 0;
    NotificationCenter::Observation observation;
    std::vector<std::string> warnings;
    PropertyListDefaults defaults;
};

class PropertyListDefaultsTest : public testing::Test {
protected:
    PropertyListDefaultsTest() { fs::create_directory(m_folder.file("zebmaker")); }

    /// Only the list and its lock file exist.
    void expectNoOtherFiles() const {
        EXPECT_THAT(m_folder.names(),
                    ElementsAre("zebmaker", "zebmaker/preferences.plist", "zebmaker/preferences.plist.lock"));
    }

    test::TemporaryFolder m_folder;
    const std::string m_path = m_folder.file("zebmaker/preferences.plist");
};

TEST_F(PropertyListDefaultsTest, KeepsValuesAcrossProcesses) {
    const PropertyDictionary values = {{"presetDVDW", 768},
                                       {"soundEffectsEnabled", false},
                                       {"ZEBMaker.lastInputDir", "/films/Ä & B"},
                                       {"userPresetsJSON", PropertyData{'[', ']'}},
                                       {"list", PropertyArray{1, "a"}}};
    {
        Instance instance(m_path);
        for (const auto& [key, value] : values)
            instance.defaults.set(key, value);
        EXPECT_EQ(instance.announcements, 5);
        instance.defaults.set("presetDVDW", 768);
        instance.defaults.remove("nothing");
        EXPECT_EQ(instance.announcements, 5) << "what changes nothing";
        instance.defaults.set("gone", 1);
        instance.defaults.remove("gone");
        EXPECT_EQ(instance.announcements, 7);
        EXPECT_THAT(instance.warnings, IsEmpty());
    }
    EXPECT_EQ(Instance(m_path).defaults.dictionaryRepresentation(), values);
    EXPECT_EQ(fs::status(m_path).permissions(), fs::perms{0600});
    expectNoOtherFiles();
}

TEST_F(PropertyListDefaultsTest, TwoInstancesKeepEachOthersValues) {
    fs::remove(m_folder.file("zebmaker"));  // not created yet
    Instance one(m_path), other(m_path);
    for (int i = 0; i < 5; ++i) {
        one.defaults.set("one" + std::to_string(i), i);
        other.defaults.set("other" + std::to_string(i), i);
    }
    EXPECT_EQ(listIn(m_path).size(), 10u);
    EXPECT_EQ(other.defaults.integer("one4"), 4) << "saving reads the file first";
    EXPECT_FALSE(one.defaults.object("other4")) << "until the next change";
    one.defaults.set("last", 1);
    EXPECT_EQ(one.defaults.integer("other4"), 4);
    one.defaults.remove("other4");
    EXPECT_EQ(listIn(m_path).size(), 10u);
}

TEST_F(PropertyListDefaultsTest, FollowsLinkAndKeepsPermissions) {
    fs::create_directories(m_folder.file("dotfiles"));
    fs::create_symlink("../dotfiles/missing", m_path);
    Instance instance(m_path);
    instance.defaults.set("key", 1);
    EXPECT_TRUE(fs::is_symlink(m_path));
    fs::permissions(m_path, fs::perms{0640});
    instance.defaults.set("key", 2);
    EXPECT_TRUE(fs::is_symlink(m_path));
    EXPECT_EQ(listIn(m_folder.file("dotfiles/missing")), (PropertyDictionary{{"key", 2}}));
    EXPECT_EQ(fs::status(m_path).permissions(), fs::perms{0640});
    EXPECT_THAT(m_folder.names(), Contains(HasSubstr("dotfiles/")).Times(1));
}

TEST_F(PropertyListDefaultsTest, SetsDamagedFilesAside) {
    const std::string damaged[] = {"<plist><dict><key>a</key>", "(no, dictionary)", std::string(50, '\0')};
    for (const std::string& contents : damaged) {
        test::store(m_path, contents);
        Instance instance(m_path);
        EXPECT_THAT(instance.warnings, ElementsAre(HasSubstr("set aside")));
        EXPECT_THAT(instance.defaults.dictionaryRepresentation(), IsEmpty());
    }
    EXPECT_EQ(test::contents(m_path + ".damaged"), damaged[0]);
    EXPECT_EQ(test::contents(m_path + ".damaged-2"), damaged[1]);
    EXPECT_EQ(test::contents(m_path + ".damaged-3"), damaged[2]);
    Instance instance(m_path);
    instance.defaults.set("a", 1);
    test::store(m_path, damaged[0]);
    instance.defaults.set("b", 2);
    EXPECT_EQ(test::contents(m_path + ".damaged-4"), damaged[0]);
    EXPECT_EQ(listIn(m_path), (PropertyDictionary{{"a", 1}, {"b", 2}})) << "what was known is not lost";
    test::store(m_path, "");
    instance.defaults.set("b", 3);
    EXPECT_EQ(listIn(m_path), (PropertyDictionary{{"a", 1}, {"b", 3}}));
    EXPECT_EQ(instance.warnings.size(), 1u) << "an empty file holds nothing worth keeping";
}

TEST_F(PropertyListDefaultsTest, KeepsValuesInMemoryIfUnwritable) {
    fs::remove(m_folder.file("zebmaker"));
    test::store(m_folder.file("zebmaker"), "a file, not a folder");
    Instance instance(m_path);
    instance.defaults.set("a", 1);
    instance.defaults.set("b", 2);
    instance.defaults.remove("b");
    instance.defaults.set("c", 3);
    const PropertyDictionary values = {{"a", 1}, {"c", 3}};
    EXPECT_EQ(instance.defaults.dictionaryRepresentation(), values);
    EXPECT_THAT(instance.warnings, ElementsAre(HasSubstr("cannot be saved: ")));
    fs::remove(m_folder.file("zebmaker"));
    instance.defaults.set("c", 3);
    EXPECT_EQ(listIn(m_path), values) << "once more is another try";
    EXPECT_EQ(instance.announcements, 4);

    // A folder at the path of the list is neither read nor replaced.
    fs::remove(m_path);
    fs::create_directory(m_path);
    Instance blocked(m_path);
    blocked.defaults.set("a", 1);
    EXPECT_EQ(blocked.defaults.integer("a"), 1);
    EXPECT_TRUE(fs::is_directory(m_path));
    expectNoOtherFiles();
}

TEST_F(PropertyListDefaultsTest, FailedWriteKeepsOldFile) {
    Instance instance(m_path);
    instance.defaults.set("a", 1);
    struct rlimit limit {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto former = ::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit tight = {4096, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    instance.defaults.set("b", std::string(10000, 'b'));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    ::signal(SIGXFSZ, former);
    EXPECT_EQ(instance.warnings.size(), 1u);
    EXPECT_EQ(listIn(m_path), (PropertyDictionary{{"a", 1}}));
    expectNoOtherFiles();
    instance.defaults.set("c", 3);
    EXPECT_EQ(listIn(m_path).size(), 3u) << "the next saving makes up for it";
}

/// Runs `work` in a child process. Returns its process id.
template <typename Work>
pid_t inChild(Work work) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    return child;
}

void setKey(PropertyListFile& file, const std::string& key, int value) {
    file.update({}, [&](PropertyListTree& tree) {
        tree.set(key, value);
        tree.set(key + " again", value);
    });
}

TEST_F(PropertyListDefaultsTest, ConcurrentProcessesLoseNoValue) {
    std::vector<pid_t> children;
    for (const char* name : {"a", "b", "c"}) {
        children.push_back(inChild([&] {
            PropertyListFile file(m_path, [](const std::string&) { ::_exit(1); });
            for (int i = 0; i < 20; ++i)
                setKey(file, name + std::to_string(i), i);
        }));
    }
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(listIn(m_path).size(), 120u);
}

TEST_F(PropertyListDefaultsTest, KilledProcessLeavesConsistentFile) {
    for (int round = 0; round < 20; ++round) {
        int ends[2] = {};
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t child = inChild([&] {
            PropertyListFile file(m_path, [](const std::string&) { ::_exit(1); });
            for (int i = 1;; ++i) {
                setKey(file, "key", i);
                if (::write(ends[1], "x", 1) != 1) ::_exit(1);
            }
        });
        ::close(ends[1]);
        char written = 0;
        for (int i = 0; i <= round % 4; ++i)
            ASSERT_EQ(::read(ends[0], &written, 1), 1);
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        ::close(ends[0]);
        EXPECT_TRUE(WIFSIGNALED(status));
        const PropertyDictionary values = listIn(m_path);
        EXPECT_EQ(values.at("key"), values.at("key again"));
    }
    Instance instance(m_path);
    instance.defaults.set("after", 1);
    EXPECT_THAT(instance.warnings, IsEmpty());
    expectNoOtherFiles();  // incomplete files of killed processes are removed
}

}  // namespace
}  // namespace zeb
