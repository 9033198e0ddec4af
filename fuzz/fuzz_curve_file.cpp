// Recorded curve files: any bytes as the file, read by LoadCurveData2 on a dot and on a comma
// machine, then opened in the review window (once, or twice to line the two up on their first
// hold). A bad file fails with the console's own failure and leaves nothing half read; the
// window reports it and carries on.
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "app/zel_error.h"
#include "data/curve_file_reader.h"
#include "fakes/fake_platform.h"
#include "language/messages.h"
#include "review/patient_curves.h"

namespace {

void expect_whole_or_empty(const QString& path, QChar separator) {
    zel::CurveData curve;
    curve.volume = {42.0};  // a file that is not a curve file leaves what was there
    try {
        zel::LoadCurveData2(path, curve, separator);
    } catch (const zel::ZelError& e) {
        if (e.number == zel::err_bad_curve_file) {
            if (curve.volume.size() != 1) std::abort();
            return;
        }
        if (e.number != zel::err_type_mismatch && e.number != zel::err_overflow &&
            e.number != zel::err_subscript && e.number != zel::err_division_by_zero) {
            std::fprintf(stderr, "unexpected failure %d: %s\n", e.number,
                         qPrintable(e.description));
            std::abort();
        }
        if (!curve.volume.empty() || !curve.time.empty() || !curve.balloon.empty() ||
            !curve.patient_switch.empty() || !curve.session_time.empty())
            std::abort();
        return;
    }
    const size_t n = curve.time.size();
    if (n == 0 || curve.volume.size() != n || curve.balloon.size() != n ||
        curve.patient_switch.size() != n || curve.session_time.size() != n)
        std::abort();
    if (curve.count_frequency == 0 || !std::isfinite(curve.threshold)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool loaded = (zel::load_default_messages(), true);
    (void)loaded;
    static QTemporaryDir folder;
    static const QString path = folder.path() + QStringLiteral("/Doe_1.dat");
    if (size < 1) return 0;
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) std::abort();
        file.write(reinterpret_cast<const char*>(data + 1), static_cast<qint64>(size - 1));
    }
    expect_whole_or_empty(path, QLatin1Char('.'));
    expect_whole_or_empty(path, QLatin1Char(','));

    zel::test::FakeFileDialogs dialogs;
    zel::test::FakeMessageBoxes boxes;
    zel::test::FakeLocale locale;
    if (data[0] & 1) locale.separator = QLatin1Char(',');
    zel::PatientCurves window{zel::ReviewPlatform{dialogs, boxes, locale}, folder.path()};
    try {
        QStringList paths{path};
        if (data[0] & 2) paths.append(path);
        window.Form_Load(paths);
        if (window.comboAlign.items.size() > 0) {
            window.comboAlign.ListIndex = 0;
            window.buttonApply_Click();
        }
        window.Form_Unload();
    } catch (const zel::ZelError& e) {
        std::fprintf(stderr, "the review window failed: %d %s: %s\n", e.number,
                     qPrintable(e.source), qPrintable(e.description));
        std::abort();
    }
    return 0;
}
