#include "platform/posix/PropertyListDefaults.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <semaphore>

#include "platform/PropertyList.h"
#include "platform/fake/HandDrivenMainActor.h"
#include "platform/posix/PropertyListFile.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace std::chrono_literals;

/// A main thread driven by hand that can be waited for.
class Actor final : public MainActor {
public:
    void post(Work work) override {
        m_actor.post(std::move(work));
        m_posts.release();
    }
    void postAfter(std::chrono::nanoseconds delay, Work work) override {
        m_actor.postAfter(delay, std::move(work));
    }
    /// Waits for work from another thread and lets the time pass that it asks for.
    void awaitWork() {
        if (!m_posts.try_acquire_for(60s)) throw std::runtime_error("nobody called");
        settle();
    }
    void settle() {
        m_actor.pass(1s);
        while (m_posts.try_acquire()) {
        }
    }

private:
    fake::HandDrivenMainActor m_actor;
    std::counting_semaphore<> m_posts{0};
};

PropertyDictionary listIn(const std::string& path) {
    return *propertyList::parse(test::contents<PropertyData>(path)).as<PropertyDictionary>();
}

/// One running program.
struct Instance {
    explicit Instance(const std::string& path)
        : observation(notifications.observe(userDefaultsDidChangeNotification,
                                            [this](const Notification&) { ++announcements; })),
          defaults(path, notifications, actor,
                   [this](const std::string& line) { warnings.push_back(line); }) {
        actor.settle();
    }

    Actor actor;
    NotificationCenter notifications;
    int announcements = 0;
    NotificationCenter::Observation observation;
    std::vector<std::string> warnings;
    PropertyListDefaults defaults;
};

class PropertyListDefaultsTest : public testing::Test {
protected:
    PropertyListDefaultsTest() { fs::create_directory(m_folder.file("zebmaker")); }

    /// Nothing but the list is there, and the lock beside it.
    void expectNoOtherFiles() const {
        EXPECT_THAT(m_folder.names(),
                    ElementsAre("zebmaker", "zebmaker/preferences.plist", "zebmaker/preferences.plist.lock"));
    }

    test::TemporaryFolder m_folder;
    const std::string m_path = m_folder.file("zebmaker/preferences.plist");
};

TEST_F(PropertyListDefaultsTest, KeepsValuesBeyondTheProcess) {
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
        instance.actor.awaitWork();
        EXPECT_EQ(instance.announcements, 7) << "the watch sees our own changes too, and says nothing";
        EXPECT_THAT(instance.warnings, IsEmpty());
    }
    EXPECT_EQ(Instance(m_path).defaults.dictionaryRepresentation(), values);
    EXPECT_EQ(fs::status(m_path).permissions(), fs::perms{0600});
    expectNoOtherFiles();
}

TEST_F(PropertyListDefaultsTest, TwoInstancesLoseNothingOfEachOther) {
    fs::remove(m_folder.file("zebmaker"));  // nobody has made it yet
    Instance one(m_path), other(m_path);
    for (int i = 0; i < 5; ++i) {
        one.defaults.set("one" + std::to_string(i), i);
        other.defaults.set("other" + std::to_string(i), i);
    }
    one.defaults.remove("other4");  // not heard of yet: nothing to remove
    while (!one.defaults.object("other4"))
        one.actor.awaitWork();
    EXPECT_EQ(listIn(m_path).size(), 10u);
    one.defaults.remove("other4");
    EXPECT_EQ(listIn(m_path).size(), 9u);
    EXPECT_EQ(other.defaults.integer("one4"), 4) << "its last saving read everything";
    while (other.defaults.object("other4"))
        other.actor.awaitWork();
}

TEST_F(PropertyListDefaultsTest, AnnouncesChangesOfOthersOnce) {
    Instance instance(m_path);
    const auto expectChange = [&](std::int64_t value, int announcements) {
        instance.actor.awaitWork();
        while (instance.defaults.integer("key") != value)
            instance.actor.awaitWork();
        EXPECT_EQ(instance.announcements, announcements);
    };
    test::store(m_path, "{ key = 1; }");
    expectChange(1, 1);
    test::store(m_folder.file("brought"), "<plist><dict><key>key</key><integer>2</integer></dict></plist>");
    fs::rename(m_folder.file("brought"), m_path);
    expectChange(2, 2);

    const auto unrelated = "{ key = 2; other = { a = 1; }";
    test::store(m_path, unrelated);
    instance.actor.awaitWork();
    EXPECT_EQ(instance.defaults.integer("key"), 2) << "half a file keeps the values";
    EXPECT_EQ(test::contents(m_path), unrelated) << "and stays, for its writer may be at work";
    fs::remove(m_path);
    expectChange(0, 3);

    fs::create_directory(m_folder.file("dotfiles"));
    test::store(m_folder.file("dotfiles/list"), "{ key = 4; }");
    fs::create_symlink("../dotfiles/list", m_path);
    expectChange(4, 4);
    test::store(m_folder.file("dotfiles/list"), "{ key = 5; }");
    expectChange(5, 5);
    EXPECT_THAT(instance.warnings, IsEmpty());
}

TEST_F(PropertyListDefaultsTest, FollowsTheUsersLinkAndKeepsPermissions) {
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

TEST_F(PropertyListDefaultsTest, GoesOnInMemoryWhereItCannotWrite) {
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

    // A folder in the file's place is neither read nor replaced.
    fs::remove(m_path);
    fs::create_directory(m_path);
    Instance blocked(m_path);
    blocked.defaults.set("a", 1);
    EXPECT_EQ(blocked.defaults.integer("a"), 1);
    EXPECT_TRUE(fs::is_directory(m_path));
    expectNoOtherFiles();
}

TEST_F(PropertyListDefaultsTest, AFailedWriteLeavesTheOldFile) {
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

/// Runs `work` in a process of its own; returns its number.
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

TEST_F(PropertyListDefaultsTest, ProcessesTakeTurns) {
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

TEST_F(PropertyListDefaultsTest, AKilledProcessLeavesOldOrNew) {
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
    expectNoOtherFiles();  // what the killed ones left half done is gone
}

}  // namespace
}  // namespace zeb
