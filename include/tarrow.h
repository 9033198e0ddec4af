/* The gating system's library: nine functions and the three records they fill.
 *
 * The console opens libtarrow.so at run time and calls these on its one user-interface
 * thread. Character fields are single bytes, fixed in length, and not ended by a 0 when
 * they are full. */
#ifndef TARROW_H
#define TARROW_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The state of the relay box, one character code per byte. */
typedef struct TarrowStatus {
    char relay_link;            /* '^' link up, '_' link down */
    char relay_state;           /* 'O' open, 'o' opening, 'C' closed, 'c' closing,
                                   'X' opening error, 'Y' closing error, 'U' unknown */
    char fast_gating;           /* '!' a timing violation stands, ':' none */
    char reserved;              /* not read */
    char enable_state;          /* 'E' enabled, 'D' disabled, 'F' fault */
    char permission_to_disable; /* 'L' locked, 'U' unlocked */
} TarrowStatus;

typedef struct TarrowFirmware {
    char relay_firmware[9];
    char control_firmware[9];
} TarrowFirmware;

typedef struct TarrowDllVersion {
    char dll_version[9];
} TarrowDllVersion;

#ifdef __cplusplus
static_assert(sizeof(TarrowStatus) == 6, "TarrowStatus is six bytes");
static_assert(sizeof(TarrowFirmware) == 18, "TarrowFirmware is two fields of nine bytes");
static_assert(sizeof(TarrowDllVersion) == 9, "TarrowDllVersion is nine bytes");
#else
_Static_assert(sizeof(TarrowStatus) == 6, "TarrowStatus is six bytes");
_Static_assert(sizeof(TarrowFirmware) == 18, "TarrowFirmware is two fields of nine bytes");
_Static_assert(sizeof(TarrowDllVersion) == 9, "TarrowDllVersion is nine bytes");
#endif

/* 0: the connection to the system is open; any other value: it is not. */
int16_t Tarrow_Open(void);
/* The result has no meaning. */
int16_t Tarrow_Close(void);
/* 0: connected; any other value: not. */
int16_t Tarrow_Connected(void);
int16_t Tarrow_GetStatus(TarrowStatus* status);
int16_t Tarrow_GetFirmwareVersions(TarrowFirmware* firmware);
int16_t Tarrow_GetDLLVersion(TarrowDllVersion* version);
/* 1 closes the relay and lets the beam run; 0 opens it. */
int16_t Tarrow_SetRelayState(uint8_t close_relay);
/* 0 locks the enable state; 1 unlocks it, so that it may be disabled. */
int16_t Tarrow_SetRelayEnablePermission(uint8_t unlock);
/* Clears a standing timing violation. */
int16_t Tarrow_ClearTimingViolation(void);

/* The functions' types, for loading the library by name. */
typedef int16_t (*Tarrow_Open_t)(void);
typedef int16_t (*Tarrow_Close_t)(void);
typedef int16_t (*Tarrow_Connected_t)(void);
typedef int16_t (*Tarrow_GetStatus_t)(TarrowStatus*);
typedef int16_t (*Tarrow_GetFirmwareVersions_t)(TarrowFirmware*);
typedef int16_t (*Tarrow_GetDLLVersion_t)(TarrowDllVersion*);
typedef int16_t (*Tarrow_SetRelayState_t)(uint8_t);
typedef int16_t (*Tarrow_SetRelayEnablePermission_t)(uint8_t);
typedef int16_t (*Tarrow_ClearTimingViolation_t)(void);

#ifdef __cplusplus
}
#endif

#endif
