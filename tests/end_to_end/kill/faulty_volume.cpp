#include "end_to_end/kill/faulty_volume.h"
#include "base/property_list.h"

#include "support/fixtures.h"
#include "support/small_disk.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tidwen::test {

namespace fs = std::filesystem;

namespace {

const Words applications = {"/Applications/Marlin Notes.app", "/Applications/Zoë's \"Draw\".app"};

/// A longer run hangs.
constexpr unsigned longestRunInSeconds = 60;

/// As C functions expect them.
std::vector<char*> pointersTo(Words& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (auto& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Runs a program to completion with its output in a file; returns its status as `waitpid` does.
int runToEnd(Words arguments, Words environment, const fs::path& output) {
    const auto words = pointersTo(arguments), variables = pointersTo(environment);
    const pid_t child = fork();
    if (child == 0) {
        const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
        alarm(longestRunInSeconds);
        execve(words[0], words.data(), variables.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

Words macPathsWhere(const fs::path& root, const std::function<bool(const fs::directory_entry&)>& holds) {
    Words found;
    for (const auto& each : fs::recursive_directory_iterator(root))
        if (holds(each)) found.push_back("/" + each.path().lexically_relative(root).string());
    return found;
}

} // namespace

FaultyVolume::FaultyVolume(const fs::path& otherDisk, bool exclusiveRename)
    : exclusiveRename_(exclusiveRename) {
    volume_.makeFolder("/Users/alice/.Trash");
    if (!otherDisk.empty()) {
        for (const auto& left : fs::directory_iterator(otherDisk))
            fs::remove_all(left);
        if (mount(otherDisk.c_str(), trash().c_str(), nullptr, MS_BIND, nullptr) != 0)
            throw std::runtime_error("cannot mount the other disk");
    }
    fill(tag(trash())); // a move to a disk without extended attributes would be refused
    memory_.emplace(volume_.hostRoot());
}

FaultyVolume::~FaultyVolume() {
    umount2(trash().c_str(), MNT_DETACH); // fails if nothing is mounted
}

/// Items of the user and the system, of every kind and with unusual names.
void FaultyVolume::fill(bool withAttributes) const {
    writeBundle(volume_, applications[0], "com.example.marlin", "Marlin Notes");
    writeBundle(volume_, applications[1], "com.example.draw", "Zoë's \"Draw\"");
    volume_.link(applications[0] + "/Contents/Current", "MacOS/Marlin Notes");
    const std::string library = "/Users/alice/Library/";
    const Words files = {
        "/Library/Caches/com.example.marlin/index",
        "/Library/LaunchDaemons/com.example.draw.daemon.plist",
        library + "Application Support/com.example.draw/Fußnoten/Re\u0301sume\u0301.txt",
        library + "Application Support/Marlin Notes/it's \"quoted\" \\ $HOME/*?",
        library + "Caches/com.example.marlin/line\nbreak/-rf",
        library + "Caches/com.example.draw.it's \"é\"\n",
        library + "Preferences/com.example.marlin.plist",
        library + "Logs/keep me.log",
    };
    for (const auto& file : files)
        volume_.write(file, "content of " + file);
    volume_.write("/Library/LaunchDaemons/com.example.draw.daemon.plist",
                  writeXmlPropertyList(PropertyListDictionary{
                      {"Label", "com.example.draw.daemon"},
                      {"Program", applications[1] + "/Contents/MacOS/Zoë's \"Draw\""}}));
    volume_.write(files[4], std::string(300'000, 'x'));
    volume_.link(library + "Application Support/Marlin Notes/nowhere", "/does/not/exist");
    volume_.makeFolder(library + "Application Support/Marlin Notes/empty");
    volume_.makeFolder("/Users/alice/.Trash");
    fs::permissions(volume_.host(applications[0] + "/Contents/MacOS/Marlin Notes"), fs::perms(0755));
    fs::permissions(volume_.host(files[6]), fs::perms(0600));
    fs::permissions(volume_.host(library + "Application Support/Marlin Notes"), fs::perms(0750));
    if (!withAttributes) return;
    for (const auto& path : {applications[0], files[6]})
        tag(volume_.host(path));
}

Ended FaultyVolume::tidwen(Words arguments, const Fault& fault) const {
    const auto output = scratch_.path() / "output", note = scratch_.path() / "note";
    arguments.insert(arguments.begin(), {TIDWEN_PROGRAM, "--volume", volume_.hostRoot().string()});
    Words environment = {std::string("LD_PRELOAD=") + TIDWEN_FAULT_MODULE,
                         "TIDWEN_FAULT_BELOW=" + volume_.hostRoot().string(),
                         "TIDWEN_FAULT_AT=" + std::to_string(fault.at),
                         "TIDWEN_FAULT=" + fault.kind,
                         "TIDWEN_FAULT_NOTE=" + note.string(),
                         "ASAN_OPTIONS=verify_asan_link_order=0",
                         "HOME=" + scratch_.path().string()};
    if (fault.lasts) environment.emplace_back("TIDWEN_FAULT_LASTS=1");
    if (!exclusiveRename_) environment.push_back("TIDWEN_NO_EXCLUSIVE_RENAME=" + std::to_string(EINVAL));
    fs::remove(note);
    const int status = runToEnd(std::move(arguments), std::move(environment), output);
    return {WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            contentOf(output), contentOf(note)};
}

Ended FaultyVolume::remove(const Fault& fault) const {
    return tidwen({"remove", applications[0], applications[1], "--risk", "safe,review,sensitive", "--yes"},
                  fault);
}

Words FaultyVolume::itemsLeft() const {
    return macPathsWhere(volume_.hostRoot(), [](const fs::directory_entry& each) {
        return !each.is_directory() && each.path().string().find("/.Trash/") == std::string::npos;
    });
}

Words FaultyVolume::hiddenItems() const {
    return macPathsWhere(volume_.hostRoot(), [](const fs::directory_entry& each) {
        const auto name = each.path().filename().string();
        return name.starts_with(".tidwen-copy-") || name.starts_with(".tidwen-moved-")
               || name.starts_with(".tidwen-arrived-");
    });
}

Words FaultyVolume::takenItemsLeft() const {
    const std::string library = "/Users/alice/Library/";
    Words left;
    for (const auto& path :
         {applications[0], applications[1], std::string("/Library/Caches/com.example.marlin"),
          std::string("/Library/LaunchDaemons/com.example.draw.daemon.plist"),
          library + "Application Support/com.example.draw", library + "Application Support/Marlin Notes",
          library + "Caches/com.example.marlin", library + "Preferences/com.example.marlin.plist"}) {
        const fs::path place(path);
        const auto hidden = place.parent_path() / (".tidwen-moved-" + place.filename().string());
        if (volume_.exists(path) || volume_.exists(hidden.string())) left.push_back(path);
    }
    return left;
}

bool FaultyVolume::isTrashCleared() const {
    return macPathsWhere(trash(), [](const fs::directory_entry& each) { return !each.is_directory(); })
        .empty();
}

std::string nameOf(const testing::TestParamInfo<Disks>& disks) {
    return std::string(disks.param.trashElsewhere ? "TrashOnAnotherDisk" : "OneDisk")
           + (disks.param.exclusiveRename ? "" : "WithoutExclusiveRename");
}

std::optional<std::string>
sweepFaults(const Disks& disks, const std::string& what, const std::vector<Fault>& faults,
            const std::function<bool(const FaultyVolume&, const Fault&)>& runWith) {
    const char* wanted = std::getenv("TIDWEN_FAULT_STEP");
    const int longStep = wanted ? std::max(1, std::atoi(wanted)) : 6;
    const int step = disks.trashElsewhere ? longStep : std::max(1, longStep / 3);
    const auto all = [&](const fs::path& otherDisk) {
        int runs = 0;
        bool ended = false;
        const auto runOnce = [&](Fault fault, int point) {
            SCOPED_TRACE("call " + std::to_string(point) + ", fault " + fault.kind
                         + (fault.lasts ? " for good" : ""));
            fault.at = point;
            ended = runWith(FaultyVolume(otherDisk, disks.exclusiveRename), fault) || ended;
            ++runs;
        };
        int point = 1;
        while (!ended) {
            if (longStep > 1)
                runOnce(faults[runs % faults.size()], point);
            else
                for (const auto& fault : faults)
                    runOnce(fault, point);
            point += step;
        }
        std::cout << "[  FAULTS  ] " << what << (disks.trashElsewhere ? ", Trash on another disk" : "")
                  << (disks.exclusiveRename ? "" : ", no exclusive rename") << ": " << runs
                  << " runs, one each " << (step == 1 ? "call" : std::to_string(step) + " calls")
                  << std::endl;
    };
    if (disks.trashElsewhere) return withSmallDisk(16u << 20, all);
    all({});
    return std::nullopt;
}

} // namespace tidwen::test
