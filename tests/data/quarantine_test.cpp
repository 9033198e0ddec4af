#include "data/quarantine.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <map>

#include "app/zel_error.h"
#include "data/patient_file.h"
#include "fakes/qt_printers.h"

namespace zel {
namespace {

const QString quarantine_name = QStringLiteral("Quarantine - NOT FOR CLINICAL USE");

// Every file under `folder` by its relative path, with its bytes.
std::map<QString, QByteArray> tree(const QString& folder) {
    std::map<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        files[QDir(folder).relativeFilePath(file.fileName())] = file.readAll();
    }
    return files;
}

QStringList entries(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
}

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

class Quarantine : public ::testing::Test {
  protected:
    // A patient as the console leaves one: the read-only ".zel", its companion, a session
    // file and a folder of curves. `mark` tells one patient of a name from another. Its folder.
    QString make_patient(const QString& directory, const char* last, const char* mark) {
        const PatientParameters p{last, "John", "1"};
        const QString path = patient_file_path(directory, last, p.first_name, p.medical_id);
        const QString folder = QFileInfo(path).path();
        EXPECT_TRUE(QDir().mkpath(folder + QStringLiteral("/curves")));
        EXPECT_TRUE(write_patient_files(path, patient_file_lines("ZEL Patient Parameter File", mark,
                                                                 p, "11/22/2024", "dot", '.')));
        write(folder + QStringLiteral("/session.ini"), mark);
        write(folder + QStringLiteral("/curves/1.crv"), QByteArray("curve ") + mark);
        return folder;
    }

    QTemporaryDir dir;
    const QString data = dir.path() + QStringLiteral("/data");
    const QString quarantine = data + QLatin1Char('/') + quarantine_name;
};

TEST_F(Quarantine, moves_the_patient_folder_whole_and_numbers_later_ones_of_a_name) {
    std::vector<std::map<QString, QByteArray>> moved;
    for (const char* mark : {"first", "second", "third"}) {
        const QString folder = make_patient(data, "Smith", mark);
        moved.push_back(tree(folder));
        ASSERT_EQ(moved.back().size(), 4u);
        quarantine_patient(folder + "/Smith.zel", quarantine_name);
        EXPECT_FALSE(QFileInfo::exists(folder)) << mark;
    }
    EXPECT_EQ(entries(data), QStringList({quarantine_name}));
    const QStringList numbered{"Smith_John_1", "Smith_John_1( 2)", "Smith_John_1( 3)"};
    EXPECT_EQ(entries(quarantine), numbered);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(tree(quarantine + "/" + numbered[i]), moved[i]);
}

TEST_F(Quarantine, goes_beside_the_folder_of_a_file_chosen_elsewhere) {
    const QString elsewhere = dir.path() + QStringLiteral("/usb stick");
    make_patient(data, "Jones", "stays");
    quarantine_patient(make_patient(elsewhere, "Jones", "moves") + "/Jones.zel", quarantine_name);

    EXPECT_EQ(entries(elsewhere), QStringList({quarantine_name}));
    EXPECT_EQ(tree(elsewhere + "/" + quarantine_name + "/Jones_John_1")["session.ini"], "moves");
    EXPECT_EQ(tree(data + "/Jones_John_1")["session.ini"], "stays");
    EXPECT_FALSE(QFileInfo::exists(quarantine));
}

// A patient file lying in the quarantine folder itself would be copied into that folder and
// then deleted with it; a missing patient is no cause to delete anything.
TEST_F(Quarantine, leaves_a_patient_whose_folder_would_hold_its_own_copy_or_is_missing) {
    const QString folder = make_patient(data, "Smith", "x");
    QDir().mkpath(quarantine);
    ASSERT_TRUE(QFile::copy(folder + "/Smith.zel", quarantine + "/Smith.zel"));
    ASSERT_TRUE(QFile::copy(folder + "/Smith.sfv", quarantine + "/Smith.sfv"));
    const auto before = tree(data);

    quarantine_patient(quarantine + "/Smith.zel", quarantine_name);
    quarantine_patient(data + QStringLiteral("/Jones_John_1/Jones.zel"), quarantine_name);
    QString inside = folder + QStringLiteral("/curves");
    EXPECT_FALSE(copy_folder(folder, inside));
    QString destination = quarantine;
    EXPECT_FALSE(copy_folder(data + QStringLiteral("/Jones_John_1"), destination));
    EXPECT_EQ(destination, quarantine);

    EXPECT_EQ(tree(data), before);
}

TEST_F(Quarantine, copy_tells_where_the_copy_went) {
    const QString source = make_patient(data, "Smith", "x");
    const QString target = dir.path() + QStringLiteral("/target");
    QDir().mkpath(target + QStringLiteral("/Smith_John_1"));
    for (int i = 2; i <= 99; ++i) QDir().mkpath(target + QStringLiteral("/Smith_John_1( %1)").arg(i));

    const std::pair<QString, const char*> cases[] = {  // the source, where the copy goes
        {source, "/Smith_John_1( 100)"},
        {source + QLatin1Char('/'), "/Smith_John_1( 0)"},  // every number taken
        {make_patient(data, "Jones", "y"), ""},             // no copy of the name yet
    };
    for (const auto& [from, destination_after] : cases) {
        QString destination = target;
        ASSERT_TRUE(copy_folder(from, destination)) << destination_after;
        EXPECT_EQ(destination, target + destination_after);
    }
    EXPECT_EQ(tree(target + "/Smith_John_1( 0)"), tree(source));
    EXPECT_EQ(tree(target + "/Jones_John_1").size(), 4u);
    EXPECT_EQ(tree(source).size(), 4u);

    // With "( 0)" taken too, making it fails: the earlier patient's files were once
    // overwritten by the next copy.
    write(target + "/Smith_John_1( 0)/session.ini", "earlier");
    const auto earlier = tree(target + "/Smith_John_1( 0)");
    QString destination = target;
    EXPECT_THROW(copy_folder(source, destination), ZelError);
    EXPECT_EQ(tree(target + "/Smith_John_1( 0)"), earlier);
    EXPECT_EQ(tree(source).size(), 4u);
}

// Only an unprivileged run sees the closed folders hold anything back; root removes them anyway.
TEST_F(Quarantine, delete_takes_read_only_files_and_folders) {
    const QString folder = make_patient(data, "Smith", "x");
    for (const QString& closed : {folder + QStringLiteral("/curves"), folder})
        QFile::setPermissions(closed, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    delete_folder(folder + QLatin1Char('/'));
    EXPECT_FALSE(QFileInfo::exists(folder));
    delete_folder(folder);
    EXPECT_TRUE(QFileInfo::exists(data));
}

}  // namespace
}  // namespace zel
