// The ".zel" patient file: any bytes as the file, its companion either holding the file's true
// CRC (so that the load goes on to its other tests), missing, or any bytes. The first byte
// chooses (bits 0-1: true CRC, none, bytes of the input, true CRC; bit 2: a comma machine);
// with a companion from the input, the next byte gives its length and its bytes follow. The load
// runs its tests in their order and fails only with the console's own failure, which the load's
// handler reports. The file is left as it was, and values that the load accepts, written
// back by the console, load again to the same values.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "app/zel_error.h"
#include "data/crc_companion.h"
#include "data/patient_file.h"

namespace {

const QString stamp = QStringLiteral("ZEL Patient Parameter File");
const QString version = QStringLiteral("3.00.01");

void put(const QString& path, const QByteArray& bytes) {
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        std::abort();
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

zel::PatientFileReading load(const QString& path, const QString& number_format, bool& failed) {
    failed = false;
    try {
        return zel::read_patient_file(path, stamp, version, number_format);
    } catch (const zel::ZelError& e) {
        // Everything the load may fail with reaches the handler of "Load Existing Patient".
        if (e.number != zel::err_type_mismatch && e.number != zel::err_overflow &&
            e.number != zel::err_input_past_end) {
            std::fprintf(stderr, "unexpected failure %d in %s\n", e.number, qPrintable(e.source));
            std::abort();
        }
        failed = true;
        return {};
    }
}

bool near(double a, double b, double tolerance) {
    return std::fabs(a - b) <= tolerance * std::max(1.0, std::fabs(a));
}

// The holding as the Patient Settings dialog would accept it unchanged, saved and loaded.
void expect_saved_values_load_again(const QString& path, const zel::PatientHolding& held,
                                    const QString& number_format) {
    zel::PatientParameters p;
    p.last_name = held.last_name;
    p.first_name = held.first_name;
    p.medical_id = held.medical_id;
    p.thresh = held.thresh;
    p.duration = held.duration;
    p.max_y = held.max_y;
    p.inhale = held.trigger == QLatin1String("True");
    p.x_scale_factor = held.x_scale_factor;
    p.max_x = held.max_x;
    p.gated = held.gating == QLatin1String("True");
    const QChar separator =
        number_format == QLatin1String("comma") ? QLatin1Char(',') : QLatin1Char('.');
    const QStringList lines = zel::patient_file_lines(stamp, version, p, QStringLiteral("1/2/26"),
                                                      number_format, separator);
    if (!zel::write_patient_files(path, lines)) return;  // a name outside Latin-1
    bool failed = false;
    const zel::PatientFileReading again = load(path, number_format, failed);
    if (failed || again.verdict != zel::PatientFileVerdict::accepted) {
        std::fprintf(stderr, "a file the console saved does not load: %s\n",
                     contents(path).constData());
        std::abort();
    }
    const zel::PatientHolding& back = again.holding;
    if (back.last_name != held.last_name || back.first_name != held.first_name ||
        back.medical_id != held.medical_id || back.duration != held.duration ||
        back.trigger != held.trigger || (back.gating == QLatin1String("True")) != p.gated ||
        std::fabs(back.thresh - held.thresh) > 0.005f + std::fabs(held.thresh) * 1e-6f ||
        !near(back.max_y, held.max_y, 1e-6) ||
        !near(back.x_scale_factor, held.x_scale_factor, 1e-6) ||
        !near(back.max_x, held.max_x, 1e-13)) {
        std::fprintf(stderr, "saved values load back otherwise: %s\n", contents(path).constData());
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static QTemporaryDir folder;
    static const QString patient = folder.path() + QStringLiteral("/Doe_Jane_A1");
    static const QString path = patient + QStringLiteral("/Doe.zel");
    static const QString companion = zel::companion_path(path);
    static const bool made = QDir().mkpath(patient);
    if (!made) std::abort();

    if (size < 1) return 0;
    const uint8_t flags = data[0];
    const QString number_format = (flags & 4) ? QStringLiteral("comma") : QStringLiteral("dot");
    const QByteArray input(reinterpret_cast<const char*>(data + 1),
                           static_cast<qsizetype>(size - 1));
    QByteArray companion_bytes;
    qsizetype at = 0;
    if ((flags & 3) == 2 && !input.isEmpty()) {
        const qsizetype length = static_cast<uint8_t>(input[0]);
        companion_bytes = input.mid(1, length);
        at = std::min(input.size(), 1 + length);
    }
    const QByteArray bytes = input.mid(at);

    put(path, bytes);
    QFile::remove(companion);
    switch (flags & 3) {
        case 0:
        case 3:
            if (!zel::write_crc_companion(companion, zel::CalculateCRC(path))) std::abort();
            break;
        case 2:
            put(companion, companion_bytes);
            break;
        default:
            break;
    }

    bool failed = false;
    const zel::PatientFileReading reading = load(path, number_format, failed);
    if (contents(path) != bytes) std::abort();  // a load never changes the file
    if (failed || reading.verdict != zel::PatientFileVerdict::accepted) return 0;
    if ((flags & 3) == 1) std::abort();  // no companion, no acceptance
    const zel::PatientHolding& held = reading.holding;
    if (!std::isfinite(held.thresh) || !std::isfinite(held.max_y) ||
        !std::isfinite(held.x_scale_factor) || !std::isfinite(held.max_x))
        std::abort();
    expect_saved_values_load_again(path, held, number_format);
    return 0;
}
