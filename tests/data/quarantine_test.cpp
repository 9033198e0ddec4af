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
        const QString path = it.next();
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        files[QDir(folder).relativeFilePath(path)] = file.readAll();
    }
    return files;
}

class Quarantine : public ::testing::Test {
  protected:
    // A patient as the console leaves one: the read-only ".zel", its companion, a session
    // file and a folder of curves. `mark` tells one patient of a name from another.
    QString make_patient(const QString& directory, const QString& last, const QString& mark) {
        PatientParameters p;
        p.last_name = last;
        p.first_name = QStringLiteral("John");
        p.medical_id = QStringLiteral("1");
        const QString path = patient_file_path(directory, last, p.first_name, p.medical_id);
        const QString folder = QFileInfo(path).path();
        EXPECT_TRUE(QDir().mkpath(folder + QStringLiteral("/curves")));
        EXPECT_TRUE(write_patient_files(
            path, patient_file_lines(QStringLiteral("ZEL Patient Parameter File"), mark, p,
                                     QStringLiteral("11/22/2024"), QStringLiteral("dot"),
                                     QLatin1Char('.'))));
        write(folder + QStringLiteral("/session.ini"), mark.toLatin1());
        write(folder + QStringLiteral("/curves/1.crv"), "curve " + mark.toLatin1());
        return path;
    }
    void write(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir dir;
    const QString data = dir.path() + QStringLiteral("/data");
    const QString quarantine = data + QLatin1Char('/') + quarantine_name;
};

TEST_F(Quarantine, moves_the_patient_folder_whole_and_numbers_later_ones_of_a_name) {
    std::vector<std::map<QString, QByteArray>> moved;
    for (const char* mark : {"first", "second", "third"}) {
        const QString path = make_patient(data, QStringLiteral("Smith"), QString::fromLatin1(mark));
        const QString folder = QFileInfo(path).path();
        moved.push_back(tree(folder));
        ASSERT_EQ(moved.back().size(), 4u);
        quarantine_patient(path, quarantine_name);
        EXPECT_FALSE(QFileInfo::exists(folder)) << mark;
    }

    EXPECT_EQ(QDir(data).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList({quarantine_name}));
    EXPECT_EQ(QDir(quarantine).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList({"Smith_John_1", "Smith_John_1( 2)", "Smith_John_1( 3)"}));
    EXPECT_EQ(tree(quarantine + "/Smith_John_1"), moved[0]);
    EXPECT_EQ(tree(quarantine + "/Smith_John_1( 2)"), moved[1]);
    EXPECT_EQ(tree(quarantine + "/Smith_John_1( 3)"), moved[2]);
}

TEST_F(Quarantine, goes_beside_the_folder_of_a_file_chosen_elsewhere) {
    const QString elsewhere = dir.path() + QStringLiteral("/usb stick");
    make_patient(data, QStringLiteral("Jones"), QStringLiteral("stays"));
    const QString path = make_patient(elsewhere, QStringLiteral("Jones"), QStringLiteral("moves"));

    quarantine_patient(path, quarantine_name);

    EXPECT_EQ(QDir(elsewhere).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList({quarantine_name}));
    EXPECT_EQ(tree(elsewhere + "/" + quarantine_name + "/Jones_John_1")["session.ini"], "moves");
    EXPECT_EQ(tree(data + "/Jones_John_1")["session.ini"], "stays");
    EXPECT_FALSE(QFileInfo::exists(quarantine));
}

// A patient file lying in the quarantine folder itself would be copied into that folder and
// then deleted with it.
TEST_F(Quarantine, leaves_a_patient_whose_folder_would_hold_its_own_copy) {
    const QString folder = QFileInfo(make_patient(data, "Smith", "x")).path();
    QDir().mkpath(quarantine);
    ASSERT_TRUE(QFile::copy(folder + "/Smith.zel", quarantine + "/Smith.zel"));
    ASSERT_TRUE(QFile::copy(folder + "/Smith.sfv", quarantine + "/Smith.sfv"));
    const auto before = tree(data);

    quarantine_patient(quarantine + "/Smith.zel", quarantine_name);
    QString inside = folder + QStringLiteral("/curves");
    EXPECT_FALSE(copy_folder(folder, inside));

    EXPECT_EQ(tree(data), before);
}

TEST_F(Quarantine, copy_tells_where_the_copy_went) {
    const QString source = QFileInfo(make_patient(data, "Smith", "x")).path();
    const QString target = dir.path() + QStringLiteral("/target");
    QDir().mkpath(target + QStringLiteral("/Smith_John_1"));
    for (int i = 2; i <= 99; ++i)
        QDir().mkpath(target + QStringLiteral("/Smith_John_1( %1)").arg(i));

    struct Case {
        const char* name;
        QString source;
        const char* destination_after;  // relative to `target`
    };
    const Case cases[] = {
        {"a free number", source, "/Smith_John_1( 100)"},
        {"every number taken", source + QLatin1Char('/'), "/Smith_John_1( 0)"},
        {"no copy of the name yet", QFileInfo(make_patient(data, "Jones", "y")).path(), ""},
    };
    for (const auto& c : cases) {
        QString destination = target;
        ASSERT_TRUE(copy_folder(c.source, destination)) << c.name;
        EXPECT_EQ(destination, target + c.destination_after) << c.name;
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

TEST_F(Quarantine, copy_without_a_source_deletes_nothing) {
    const QString path = make_patient(data, QStringLiteral("Smith"), QStringLiteral("x"));
    const auto before = tree(data);

    QString destination = quarantine;
    EXPECT_FALSE(copy_folder(data + QStringLiteral("/Jones_John_1"), destination));
    EXPECT_EQ(destination, quarantine);
    quarantine_patient(data + QStringLiteral("/Jones_John_1/Jones.zel"), quarantine_name);

    EXPECT_EQ(tree(data), before);
    EXPECT_TRUE(QFileInfo::exists(path));
}

// Only an unprivileged run sees the closed folders hold anything back; root removes them anyway.
TEST_F(Quarantine, delete_takes_read_only_files_and_folders) {
    const QString folder = QFileInfo(make_patient(data, "Smith", "x")).path();
    QFile::setPermissions(folder + QStringLiteral("/curves"),
                          QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);

    delete_folder(folder + QLatin1Char('/'));
    EXPECT_FALSE(QFileInfo::exists(folder));
    delete_folder(folder);
    EXPECT_TRUE(QFileInfo::exists(data));
}

}  // namespace
}  // namespace zel
