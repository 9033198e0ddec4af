#include "platform/qt_gating_library.h"

#include <QFileInfo>

#include "app/zel_error.h"

namespace zel {

QtGatingLibrary::QtGatingLibrary(QString app_data_path_)
    : app_data_path(std::move(app_data_path_)) {}

QFunctionPointer QtGatingLibrary::symbol(const char* name) {
    if (!library.isLoaded()) {
        const QString local = app_data_path + QStringLiteral("/lib/libtarrow.so");
        library.setFileName(QFileInfo::exists(local) ? local : QStringLiteral("tarrow"));
        if (!library.load())
            throw ZelError(err_file_not_found, QStringLiteral("libtarrow"),
                           QStringLiteral("File not found: ") + library.errorString());
    }
    const QFunctionPointer f = library.resolve(name);
    if (!f)
        throw ZelError(err_file_not_found, QStringLiteral("libtarrow"),
                       QStringLiteral("File not found: ") + QString::fromLatin1(name));
    return f;
}

int16_t QtGatingLibrary::Open() { return function<Tarrow_Open_t>("Tarrow_Open")(); }
int16_t QtGatingLibrary::Close() { return function<Tarrow_Close_t>("Tarrow_Close")(); }
int16_t QtGatingLibrary::Connected() {
    return function<Tarrow_Connected_t>("Tarrow_Connected")();
}
int16_t QtGatingLibrary::GetStatus(TarrowStatus& status) {
    return function<Tarrow_GetStatus_t>("Tarrow_GetStatus")(&status);
}
int16_t QtGatingLibrary::GetFirmwareVersions(TarrowFirmware& firmware) {
    return function<Tarrow_GetFirmwareVersions_t>("Tarrow_GetFirmwareVersions")(&firmware);
}
int16_t QtGatingLibrary::GetDLLVersion(TarrowDllVersion& version) {
    return function<Tarrow_GetDLLVersion_t>("Tarrow_GetDLLVersion")(&version);
}
int16_t QtGatingLibrary::SetRelayState(uint8_t close_relay) {
    return function<Tarrow_SetRelayState_t>("Tarrow_SetRelayState")(close_relay);
}
int16_t QtGatingLibrary::SetRelayEnablePermission(uint8_t unlock) {
    return function<Tarrow_SetRelayEnablePermission_t>("Tarrow_SetRelayEnablePermission")(unlock);
}
int16_t QtGatingLibrary::ClearTimingViolation() {
    return function<Tarrow_ClearTimingViolation_t>("Tarrow_ClearTimingViolation")();
}

}  // namespace zel
