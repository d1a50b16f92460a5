#include "vellio/vellio.h"

// An older build of the transport library: it has none of the optional operations, nor the two that serve it.

extern "C" {

int32_t vellCreate(int32_t, int32_t) { return 1; }
void vellDestroy(int32_t) {}
void vellSetCallBackProc(int32_t, VellCallBack, intptr_t) {}
const char* vellGetDevicePrefix(int32_t) { return "HID"; }
int32_t vellNumberOfDevice(int32_t) { return 1; }
const char* vellEnumDeviceName(int32_t, int32_t) { return "HID1"; }
const char* vellEnumDevice(int32_t, int32_t) { return "HID1 Old"; }

}  // extern "C"
