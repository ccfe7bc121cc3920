// Writes the volume for the scan benchmark: invented applications with their leftovers, and the system's own
// entries between them. Deterministic for the same numbers. Usage: make_volume FOLDER [APPLICATIONS [FILES
// [ORPHANS]]]; the folder must not exist.

#include "base/property_list.h"
#include "sample/bill_of_materials_writer.h"
#include "sample/mach_o_stub.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

using namespace tidwen;
namespace fs = std::filesystem;

namespace {

constexpr const char* home = "Users/alice/";

class VolumeWriter {
  public:
    VolumeWriter(fs::path root, std::size_t applications, std::size_t files)
        : root_(std::move(root)), applications_(applications), files_(files) {}

    void writeAll() {
        fs::create_directories(root_ / home / "Library");
        for (int i = 0; i < 400; ++i)
            writeSystemsOwn(i);
        for (std::size_t i = 0; i < applications_; ++i) {
            static constexpr const char* known[] = {"Marlin Studio", "Marlin Suite", "Marlin Notes"};
            name_ = i < 3 ? known[i] : words() + (i % 2 ? "" : " " + std::to_string(i));
            vendor_ = i % 3 == 0 ? word() : vendor_;
            identifier_ = "com." + vendor_ + "." + word() + std::to_string(i);
            // A few applications have a large part of the files, as on a real disk.
            const auto share = files_ / applications_;
            writeApplication(i, i == 0 ? share * 36 : i % 50 == 1 ? share * 6 : share * 3 / 4);
        }
        for (std::size_t i = 0; i < applications_ / 10; ++i)
            writeOrphans(i);
    }

    /// Single files of that many removed applications, in four places.
    void writeManyOrphans(std::size_t count) {
        static constexpr const char* places[] = {"Caches/", "Preferences/", "HTTPStorages/",
                                                 "Application Support/"};
        for (const auto* place : places)
            fs::create_directories(root_ / home / "Library" / place);
        for (std::size_t i = 0; i < count; ++i)
            write(std::string("Library/") + places[i * std::size(places) / count] + "com.gone"
                      + std::to_string(i) + ".thing.application",
                  "x");
    }

    std::size_t written() const { return written_; }

  private:
    void writeApplication(std::size_t number, std::size_t files) {
        const auto stop = written_ + files;
        const std::string bundle = "Applications/" + name_ + ".app/Contents/";
        writeInfo(bundle, identifier_, name_, number % 8 == 1);
        if (number % 4 == 0) {
            writeInfo(bundle + "PlugIns/Share.appex/Contents/", identifier_ + ".share", "Share");
            writeInfo(bundle + "XPCServices/Sync.xpc/Contents/", identifier_ + ".sync", "Sync");
        }
        write("Library/Preferences/" + identifier_ + ".plist", property(identifier_));
        for (const auto* folder : {"Caches/", "HTTPStorages/", "WebKit/"})
            writeTree(folder + identifier_, 6);
        writeTree("Saved Application State/" + identifier_ + ".savedState", 3);
        writeTree("Logs/" + name_, 2);
        write(std::string("Library/Logs/DiagnosticReports/") + name_ + "_2024-05-01_mac.crash", "x");
        if (number % 3 == 0) writeContainer("Containers/" + identifier_, identifier_);
        if (number % 8 == 0)
            writeContainer("Group Containers/ABCDE12345." + identifier_, "ABCDE12345." + identifier_);
        if (number % 6 == 0) writeJob();
        if (number % 5 == 0) writeReceipt(number);

        const auto left = stop > written_ ? stop - written_ : 0;
        writeTree("Application Support/" + (number % 2 ? vendor_ + "/" + name_ : name_), left / 4);
        writeTree("Caches/" + name_, left / 8);
        writeFiles(bundle + "Resources/", stop > written_ ? stop - written_ : 0);
    }

    /// The leftovers of a removed application.
    void writeOrphans(std::size_t number) {
        const auto identifier = "com.gone" + std::to_string(number) + "." + word();
        write("Library/Preferences/" + identifier + ".plist", property(identifier));
        writeTree("Caches/" + identifier, 30);
        writeTree("Application Support/" + identifier, 60);
        writeContainer("Containers/" + identifier, identifier);
    }

    void writeInfo(const std::string& contents, const std::string& identifier, const std::string& name,
                   bool hasGroup = false) {
        writeRaw(contents + "Info.plist",
                 writeBinaryPropertyList(PropertyListDictionary{{"CFBundleIdentifier", identifier},
                                                                {"CFBundleName", name},
                                                                {"CFBundleExecutable", name},
                                                                {"CFBundleShortVersionString", "1.2"}}));
        writeRaw(contents + "MacOS/" + name,
                 writeMachOStub({.identifier = identifier,
                                 .teamID = "ABCDE12345",
                                 .applicationGroups = hasGroup ? std::vector{"ABCDE12345." + identifier}
                                                               : std::vector<std::string>{},
                                 .padding = 20'000}));
    }

    void writeContainer(const std::string& folder, const std::string& identifier) {
        write(
            "Library/" + folder + "/.com.apple.containermanagerd.metadata.plist",
            writeBinaryPropertyList(PropertyListDictionary{
                {"MCMMetadataIdentifier", identifier},
                {"MCMMetadataInfo", PropertyListDictionary{{"SandboxProfileData",
                                                            PropertyListData{std::string(12'000, 'p')}}}}}));
        writeTree(folder + "/Data/Library", 8);
    }

    void writeJob() {
        const PropertyListDictionary job = {{"Label", identifier_ + ".agent"},
                                            {"Program", "/Applications/" + name_ + ".app/x"}};
        write("Library/LaunchAgents/" + identifier_ + ".agent.plist", writeXmlPropertyList(job));
    }

    void writeReceipt(std::size_t number) {
        std::vector<BomEntry> entries = {{"Applications/" + name_ + ".app/Contents/Info.plist", false, 300}};
        for (std::size_t i = 0; i < 200; ++i)
            entries.push_back(
                {"Applications/" + name_ + ".app/Contents/Resources/0/" + std::to_string(i), false, 9});
        const auto package = "private/var/db/receipts/" + identifier_ + ".pkg" + std::to_string(number % 2);
        writeRaw(package + ".bom", writeBillOfMaterials(entries));
        writeRaw(package + ".plist", writeBinaryPropertyList(PropertyListDictionary{
                                         {"PackageIdentifier", identifier_}, {"InstallPrefixPath", "/"}}));
    }

    void writeSystemsOwn(int number) {
        const auto identifier = "com.apple." + word() + std::to_string(number);
        write("Library/Preferences/" + identifier + ".plist", property(identifier));
        if (number % 2) writeTree("Caches/" + identifier, 2);
        if (number % 3 == 0) writeContainer("Containers/" + identifier, identifier);
    }

    /// Below the home's Library, with one folder per forty files.
    void writeTree(const std::string& folder, std::size_t files) {
        writeFiles(home + ("Library/" + folder) + "/", files);
    }

    void writeFiles(const std::string& folder, std::size_t files) {
        for (std::size_t i = 0; i < files; ++i)
            writeRaw(folder + std::to_string(i / 40) + "/" + std::to_string(i),
                     std::string(1 + random_() % 6000, 'x'));
    }

    void write(const std::string& place, const std::string& content) { writeRaw(home + place, content); }

    void writeRaw(const std::string& place, const std::string& content) {
        const auto file = root_ / place;
        if (file.parent_path() != parent_) fs::create_directories(parent_ = file.parent_path());
        const int out = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        if (out < 0) return;
        written_ += ::write(out, content.data(), content.size()) >= 0;
        ::close(out);
    }

    static std::string property(const std::string& value) {
        return writeBinaryPropertyList(PropertyListDictionary{{"Name", value}});
    }

    std::string word() {
        static const char* const syllables[] = {"mar", "lin",  "cor", "vel", "la", "tor",
                                                "ni",  "quen", "sa",  "bri", "do", "pax"};
        std::string word;
        for (auto count = 2 + random_() % 2; count > 0; --count)
            word += syllables[random_() % std::size(syllables)];
        return word;
    }

    std::string words() {
        auto text = word() + " " + word();
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
        return text;
    }

    fs::path root_;
    std::size_t applications_;
    std::size_t files_;
    std::size_t written_ = 0;
    std::mt19937 random_{42};
    fs::path parent_;
    std::string name_, vendor_ = "corvella", identifier_; ///< of the current application
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || fs::exists(argv[1]))
        return std::fprintf(stderr, "usage: make_volume NEW_FOLDER [APPLICATIONS [FILES [ORPHANS]]]\n"), 2;
    VolumeWriter writer(argv[1], argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 300,
                        argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 200'000);
    writer.writeAll();
    if (argc > 4) writer.writeManyOrphans(std::strtoul(argv[4], nullptr, 10));
    std::printf("%zu files\n", writer.written());
}
