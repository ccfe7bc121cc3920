#include "app/models/app_icons.h"
#include "app/style/icns_image.h"
#include "base/path.h"
#include "sample/sample_volume.h"
#include "window/window_fixture.h"

#include <QBuffer>
#include <QImage>
#include <QtEndian>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <utility>

namespace tidwen {
namespace {

using test::waitUntil;

const QColor blue(40, 96, 216);

QByteArray number(quint32 value) {
    QByteArray bytes(4, 0);
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray entry(const char* type, const QByteArray& content) {
    return QByteArray(type) + number(static_cast<quint32>(content.size()) + 8) + content;
}

std::string icns(const QByteArray& entries) {
    return entry("icns", entries).toStdString();
}

QByteArray png(int wide, int high, const QColor& color = blue) {
    QImage image(wide, high, QImage::Format_ARGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer device(&bytes);
    return device.open(QIODevice::WriteOnly) && image.save(&device, "PNG") ? bytes : QByteArray();
}

/// A square PNG in all but its content: says how large it is, and stops.
QByteArray pngThatSays(quint32 side) {
    auto bytes = png(64, 64);
    return bytes.replace(16, 8, number(side) + number(side));
}

/// The old form: each colour packed into runs of 130 equal bytes at most, and a mask of its own.
QByteArray masked() {
    QByteArray packed(4, 0);
    for (const int part : {blue.red(), blue.green(), blue.blue()})
        for (int left = 128 * 128; left > 0; left -= qMin(left, 128))
            packed += QByteArray(1, static_cast<char>(128 + 125)) + QByteArray(1, static_cast<char>(part));
    return entry("it32", packed) + entry("t8mk", QByteArray(128 * 128, static_cast<char>(255)));
}

TEST(IcnsImage, ShowsThePictureThatFitsBest) {
    const auto red = entry("ic07", png(128, 128, Qt::red));
    const auto small = entry("icp5", png(32, 32)), large = entry("ic09", png(512, 512));
    const std::pair<std::string, int> shown[] = {
        {icns(large + red + small), 24}, {icns(red + large), 200}, {icns(small), 60},
        {icns(masked()), 120},           {icns(large), 2000},
    };
    for (const auto& [file, pixels] : shown) {
        const auto image = icnsImage(file, pixels);
        EXPECT_EQ(image.size(), QSize(pixels, pixels));
        EXPECT_EQ(image.pixelColor(image.rect().center()), blue) << pixels;
    }
}

TEST(IcnsImage, IsNoneForAFileThatNoIconWouldHold) {
    QByteArray empty;
    for (int i = 0; i < 100'000; ++i)
        empty += entry("ic08", {});
    auto nested = QByteArray::fromStdString(icns(entry("ic08", png(64, 64))));
    for (int i = 0; i < 1000; ++i)
        nested = QByteArray::fromStdString(icns(entry("ic08", nested)));
    const std::string hostile[] = {
        "",
        "icns",
        png(64, 64).toStdString(), // another handler could read it
        icns(entry("ic08", QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"))),
        icns(entry("ic08", png(256, 256).left(60))),
        icns(entry("ic08", png(64, 32))),
        icns(entry("ic10", pngThatSays(20'000))),
        icns(entry("ic04", pngThatSays(16) + QByteArray(200'000, 0))), // more than its pixels could take
        icns(QByteArray("ic08") + number(0)),
        icns(QByteArray("ic08") + number(~0U)),
        icns(empty + entry("ic08", png(64, 64))),
        nested.toStdString(),
    };
    for (const auto& file : hostile)
        EXPECT_TRUE(icnsImage(file, 60).isNull()) << file.size();
}

TEST(AppIcons, ArriveAfterTheNamesAndMoveNoCard) {
    test::WindowFixture fixture;
    const auto volume = fixture.folder.path() / "Sample";
    ASSERT_TRUE(writeSampleVolume(volume));
    const auto addIcon = [&](const char* app, const std::string& file) {
        const auto contents = volume / "Applications" / app / "Contents";
        std::ifstream in(contents / "Info.plist");
        std::string info(std::istreambuf_iterator<char>(in), {});
        in.close();
        const auto end = info.rfind("</dict>");
        ASSERT_NE(end, info.npos) << app;
        info.insert(end, "<key>CFBundleIconFile</key><string>App</string>");
        std::ofstream(contents / "Info.plist") << info;
        std::ofstream(contents / "Resources/App.icns") << file;
    };
    addIcon("Marlin Notes.app", icns(entry("ic07", png(128, 128))));
    addIcon("Kip.app", icns(entry("ic08", png(256, 256).left(60))));
    ASSERT_TRUE(fixture.openSample());
    auto* cards = fixture.find<QAbstractItemView>("applications");
    const auto card = fixture.rowCalled(*cards, QStringLiteral("Marlin Notes"));
    cards->scrollTo(card);
    const auto place = cards->visualRect(card);
    auto& icons = fixture.window.mac()->icons();
    const Path notes("/Applications/Marlin Notes.app"), kip("/Applications/Kip.app");
    const auto arrived = [&](const Path& bundle) { return !icons.icon(bundle, 120).isNull(); };
    EXPECT_TRUE(waitUntil([&] { return arrived(notes) && !icons.isWaiting(); }));
    EXPECT_FALSE(arrived(kip));
    EXPECT_EQ(cards->visualRect(card), place);
    const auto seen = cards->viewport()->grab(place).toImage();
    EXPECT_EQ(seen.pixelColor(seen.width() / 2, seen.height() / 4), blue);
}

} // namespace
} // namespace tidwen
