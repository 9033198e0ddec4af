// Lining the curves up so that the chosen breath hold of each starts at time 0.
#include "app/helpers.h"
#include "language/messages.h"
#include "review/patient_curves.h"

namespace zel {

void PatientCurves::update_align_choices() {
    PatientList.Enabled = true;
    mnuExport.Enabled = true;
    if (curve_count <= 0) {
        comboAlign.items.clear();
        comboAlign.ListIndex = -1;
        comboAlign.Enabled = false;
        buttonApply.Enabled = false;
        return;
    }
    // The holds offered run up to the fewest that a shown curve has.
    int lowest = 10000;
    for (int c = 0; c < curve_count; ++c) {
        if (!entry_checked(c)) continue;
        const int n = safe_upper_bound(curve_info[c].breath_hold_times) + 1;
        if (n < lowest) lowest = n;
    }
    comboAlign.items.clear();
    comboAlign.ListIndex = -1;
    if (lowest == 10000) lowest = 0;
    if (lowest > 0) {
        comboAlign.items.append(message_text(175));
        comboAlign.Enabled = true;
        buttonApply.Enabled = true;
        for (int k = 1; k <= lowest; ++k) comboAlign.items.append(QString::number(k));
        comboAlign.ListIndex = 0;
    } else {
        comboAlign.Enabled = false;
        buttonApply.Enabled = false;
    }
}

void PatientCurves::apply_alignment() {
    if (!comboAlign.Enabled) return;
    clear_chart();
    const int sel = comboAlign.ListIndex;
    for (int i = 0; i < curve_count; ++i) {
        CurveInfo& info = curve_info[i];
        if (sel == 0) {
            info.time_shift = 0;
            PatientList.Enabled = true;
            mnuExport.Enabled = true;
        } else {
            const int n = safe_upper_bound(info.breath_hold_times) + 1;
            info.time_shift = n < sel ? 0 : -info.breath_hold_times[sel - 1];
            // No check mark may change while the curves are shifted.
            PatientList.Enabled = false;
            mnuExport.Enabled = false;
        }
        // Hidden curves too: element numbers are handed out in curve order.
        plot_curve(i);
    }
    set_chart_range();
    hide_unchecked_curves();
}

}  // namespace zel
