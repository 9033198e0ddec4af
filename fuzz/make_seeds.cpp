// Writes the seed files of the harnesses with the console's own writers (and the simulated
// module's frame encoder for the line), plus a few edge cases:  make_seeds <seeds folder>.
// Each harness's seeds go to <folder>/<harness>/, named after what they hold.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>

#include "../sim/frame_encoding.h"
#include "app/form1.h"
#include "data/crc_companion.h"
#include "data/patient_file.h"
#include "data/profile_file.h"
#include "data/session_history_file.h"
#include "data/system_settings_file.h"
#include "fakes/fake_platform.h"
#include "language/messages.h"

namespace {

QString root;

void put(const QString& harness, const QString& name, const QByteArray& bytes) {
    const QString folder = root + QLatin1Char('/') + harness;
    QDir().mkpath(folder);
    QFile file(folder + QLatin1Char('/') + name);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(bytes) != bytes.size()) {
        std::fprintf(stderr, "can't write %s\n", qPrintable(file.fileName()));
        std::exit(1);
    }
}

QByteArray contents(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) std::exit(1);
    return file.readAll();
}

template <size_t N>
QByteArray raw(const std::array<uint8_t, N>& frame) {
    return QByteArray(reinterpret_cast<const char*>(frame.data()), static_cast<qsizetype>(N));
}

// A string as FuzzedDataProvider's ConsumeRandomLengthString takes it: a backslash doubled,
// a backslash and another byte end it.
QByteArray provider_string(const QByteArray& text) {
    QByteArray out = text;
    out.replace("\\", "\\\\");
    return out + "\\e";
}

// Breathing, a hold with the balloon inflated and the time counting down, the patient's
// switch, and a status frame that echoes the settings of 1.2 L and 15 s.
std::vector<QByteArray> module_frames() {
    std::vector<QByteArray> frames;
    zelsim::StatusFrame status;
    status.version = "ZEL 3.1";
    status.battery_raw = 120;
    status.line_raw = 200;
    status.pressure_raw = 200;
    status.vacuum_raw = 200;
    status.duration_seconds = 15;
    status.threshold_units = 300;
    status.forward_calibration = 32768;
    status.reverse_calibration = 32768;
    frames.push_back(raw(zelsim::encode_status_frame(status)));
    const struct {
        uint8_t flags, balloon;
        int volume, time_left;
    } steps[] = {
        {0x04, 1, 0, 0},     {0x04, 1, 150, 0},   {0x04, 2, 290, 0},    {0x04, 3, 310, 0},
        {0x04, 4, 320, 750}, {0x06, 4, 320, 700}, {0x04, 4, 318, 10},   {0x04, 1, 200, 0},
        {0x04, 1, -40, 0},   {0x34, 5, 100, 300}, {0x08, 1, -32767, 0},
    };
    for (const auto& s : steps) {
        zelsim::DataFrame d;
        d.flags = s.flags;
        d.balloon = s.balloon;
        d.volume_units = s.volume;
        d.time_left_frames = s.time_left;
        frames.push_back(raw(zelsim::encode_data_frame(d)));
    }
    frames.push_back(raw(zelsim::encode_status_frame(status)));
    return frames;
}

void frame_seeds() {
    const std::vector<QByteArray> frames = module_frames();
    // Raw: pieces of 1 to 16 bytes, each behind its length byte.
    for (int piece : {1, 5, 16}) {
        QByteArray stream;
        for (const QByteArray& f : frames) stream += f;
        QByteArray input;
        for (qsizetype at = 0; at < stream.size(); at += piece)
            input += static_cast<char>(piece - 1) + stream.mid(at, piece);
        put(QStringLiteral("frames"), QStringLiteral("session_in_pieces_of_%1").arg(piece), input);
    }
    // Payloads: the situation byte, then each frame's kind and its bytes between the start
    // byte and the checksum.
    for (uint8_t situation : {0x00, 0x01, 0x13, 0x43, 0x2F}) {
        QByteArray input(1, static_cast<char>(situation));
        for (const QByteArray& f : frames) {
            input += static_cast<char>(static_cast<uint8_t>(f[0]) == 39 ? 1 : 0);
            input += f.mid(1, f.size() - 2);
        }
        put(QStringLiteral("frame_payloads"), QStringLiteral("session_situation_%1").arg(situation),
            input);
    }
}

// The patient harness's companion: its length in one byte, then its bytes.
QByteArray companion_field(const QByteArray& bytes) {
    return QByteArray(1, static_cast<char>(bytes.size())) + bytes;
}

zel::PatientParameters patient(bool gated, bool inhale) {
    zel::PatientParameters p;
    p.last_name = QStringLiteral("Doe");
    p.first_name = QStringLiteral("Jane");
    p.medical_id = QStringLiteral("A1");
    p.thresh = 1.35f;
    p.duration = 20;
    p.max_y = 2.5;
    p.inhale = inhale;
    p.x_scale_factor = 1.5f;
    p.max_x = 1500;
    p.gated = gated;
    return p;
}

void patient_seeds(const QString& scratch) {
    const QString stamp = QStringLiteral("ZEL Patient Parameter File");
    const QString version = QStringLiteral("3.00.01");
    const struct {
        const char* name;
        uint8_t flags;
        bool comma, gated, inhale;
    } cases[] = {
        {"dot", 0, false, false, true},
        {"comma", 4, true, true, false},
        {"dot_companion_missing", 1, false, false, true},
    };
    for (const auto& c : cases) {
        const QString path = scratch + QStringLiteral("/p/Doe.zel");
        QDir().mkpath(scratch + QStringLiteral("/p"));
        QFile::remove(path);
        const QStringList lines = zel::patient_file_lines(
            stamp, version, patient(c.gated, c.inhale), QStringLiteral("11/22/2026"),
            c.comma ? QStringLiteral("comma") : QStringLiteral("dot"),
            c.comma ? QLatin1Char(',') : QLatin1Char('.'));
        if (!zel::write_patient_files(path, lines)) std::exit(1);
        put(QStringLiteral("patient_file"), QString::fromLatin1(c.name),
            QByteArray(1, static_cast<char>(c.flags)) + contents(path));
        if (c.flags == 0) {
            // The companion as the console wrote it, given as the input's companion.
            put(QStringLiteral("patient_file"), QStringLiteral("dot_companion_as_written"),
                QByteArray(1, 2) + companion_field(contents(zel::companion_path(path))) +
                    contents(path));
            put(QStringLiteral("patient_file"), QStringLiteral("dot_cut_after_line_9"),
                QByteArray(1, 0) + contents(path).left(contents(path).indexOf("Trigger")));
        }
    }
}

void session_seeds(const QString& scratch) {
    const QString path = scratch + QStringLiteral("/session.ini");
    QFile::remove(path);
    QString saved;
    for (const char* session : {"1", "2", "2", "7a"}) {
        zel::SessionEntry entry;
        entry.id = QLatin1Char(' ') + QString::fromLatin1(session);
        entry.date = QStringLiteral("11/22/2026 at 9:05:07 AM");
        entry.threshold = QStringLiteral("1.2");
        entry.duration = QStringLiteral(" 15");
        entry.trigger = QStringLiteral("inhale");
        entry.breath_holds = QStringLiteral(" 4");
        entry.gating_mode = QStringLiteral("not gated");
        if (!zel::write_session_entry(path, QString::fromLatin1(session), entry, saved))
            std::exit(1);
    }
    put(QStringLiteral("session_history"), QStringLiteral("three_sessions"),
        provider_string("8") + contents(path));
    put(QStringLiteral("session_history"), QStringLiteral("count_beyond_the_entries"),
        provider_string("3") + contents(path).replace("TOTAL_SESSIONS= 3", "TOTAL_SESSIONS= 9"));
    put(QStringLiteral("session_history"), QStringLiteral("empty"), provider_string("1"));

    // The profile harness: its operation (last byte) and buffer size (the two before, 256 here)
    // are taken from the input's end.
    put(QStringLiteral("profile_file"), QStringLiteral("session_edit"),
        provider_string("HEADER") + provider_string("TOTAL_SESSIONS") + provider_string(" 4") +
            contents(path) + QByteArray("\x00\x01\x00", 3));
    const QString datapath = scratch + QStringLiteral("/datapath.ini");
    QFile::remove(datapath);
    if (!zel::write_profile_string(datapath, QStringLiteral("ZEL"), QStringLiteral("DataPath"),
                                   QStringLiteral("/home/operator/zel data")))
        std::exit(1);
    put(QStringLiteral("profile_file"), QStringLiteral("datapath_read"),
        provider_string("zel") + provider_string("datapath") + provider_string("none") +
            contents(datapath) + QByteArray("\x00\x01\x03", 3));
}

void settings_seeds() {
    const QString stamp = QStringLiteral("ZEL System Parameter File - DO NOT EDIT 3.00.01");
    zel::SystemSettings s;
    s.duration = 20;
    s.thresh = 1.35f;
    s.max_y = 2.5;
    s.x_scale_factor = 1.5f;
    for (bool comma : {false, true}) {
        QByteArray bytes;
        for (const QString& line : zel::system_settings_lines(
                 stamp, s, comma ? QStringLiteral("comma") : QStringLiteral("dot"),
                 comma ? QLatin1Char(',') : QLatin1Char('.')))
            bytes += line.toLatin1() + "\r\n";
        put(QStringLiteral("system_settings"),
            comma ? QStringLiteral("zel_comma.ini") : QStringLiteral("zel_dot.ini"), bytes);
    }
}

void curve_seeds(const QString& scratch) {
    const std::vector<QByteArray> frames = module_frames();
    for (bool comma : {false, true}) {
        zel::test::FakePlatform fakes;
        if (comma) fakes.locale.separator = QLatin1Char(',');
        zel::Form1 form(fakes.platform, scratch);
        fakes.serial.set_PortOpen(true);
        fakes.serial.OnComm = [&form] { form.MSComm1_OnComm(); };
        form.data_directory = scratch + QStringLiteral("/patients");
        form.patient_last_name = QStringLiteral("Doe");
        form.patient_first_name = QStringLiteral("Jane");
        form.patient_medical_id = QStringLiteral("A1");
        form.session = comma ? QStringLiteral("2") : QStringLiteral("1");
        form.thresh = 1.2f;
        form.duration = 15;
        form.patient_defined = true;
        form.Pic.Height = 7485;
        QDir().mkpath(form.data_directory + QStringLiteral("/Doe_Jane_A1"));
        form.cmdRecord_Click();
        // Breathing with two holds; the volume pattern with no magnitude is left out.
        for (int round = 0; round < 2; ++round)
            for (const QByteArray& f : frames)
                if (!(static_cast<uint8_t>(f[0]) == 131 && static_cast<uint8_t>(f[3]) == 0x80))
                    fakes.serial.receive(f);
        form.cmdPause_Click();
        const QByteArray file = contents(form.record_filename);
        const char flags = comma ? 1 : 0;
        put(QStringLiteral("curve_file"),
            comma ? QStringLiteral("recorded_comma") : QStringLiteral("recorded_dot"),
            QByteArray(1, flags) + file);
        if (!comma) {
            put(QStringLiteral("curve_file"), QStringLiteral("recorded_twice"),
                QByteArray(1, 2) + file);
            put(QStringLiteral("curve_file"), QStringLiteral("header_only"),
                QByteArray(1, 0) + file.left(file.indexOf("HeaderEnd") + 11));
        }
    }
}

void language_seeds() {
    // The built-in English catalogue as a language file: a name, then its 255 lines.
    QByteArray bytes = "\"Fuzzish\"\r\n";
    for (int id = zel::LangOffset; id < zel::LangOffset + zel::number_of_definitions; ++id)
        bytes += zel::builtin_message_text(id).toLatin1() + "\r\n";
    put(QStringLiteral("language_file"), QStringLiteral("builtin_english.lng"), bytes);
    put(QStringLiteral("language_file"), QStringLiteral("companion.sfv"),
        zel::crc_companion_line(0x1234ABCD));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_seeds <seeds folder>\n");
        return 2;
    }
    root = QString::fromLocal8Bit(argv[1]);
    zel::load_default_messages();
    QTemporaryDir scratch;
    frame_seeds();
    patient_seeds(scratch.path());
    session_seeds(scratch.path());
    settings_seeds();
    curve_seeds(scratch.path());
    language_seeds();
    return 0;
}
