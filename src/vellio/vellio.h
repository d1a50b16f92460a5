/*
 * VellIO.so: the transport library for USB HID readers. It finds readers by USB vendor and product ID, gives each a
 * port name, and carries a data stream and a control channel over HID reports (docs/hid-transport.md).
 *
 * Every operation but vellCreate takes a handle first; an unknown handle, a closed device and a bad argument give the
 * empty result (0, False, ""). Nothing here ends the program, whatever a device sends. One thread calls the library.
 *
 * Widths.  Everything is int32_t, Booleans are int16_t (-1 True, 0 False), the user value is intptr_t.
 * Texts.   Windows-1252, ended by a NUL; paths are the system's bytes. A text given stays the caller's. A text returned
 *          is the library's and holds until the next call that returns one for the same handle: copy it at once.
 * Arrays.  pointer, capacity (bytes), start, count: the part of the array from start on, count bytes of it; count 0
 *          means up to its end. A start or count outside the array is a bad argument.
 * Devices. Named by port name ("HID1"), by device text ("HID1 Kestrel") or by path ("/dev/hidraw0").
 *
 * Events are queued while reports move and delivered only from inside vellDispatch, and from vellCheckDevicesIsChanged
 * when it is asked to. The parameter of a device event is the device's number less one.
 *
 *   0 data received; parameter: bytes in the read buffer      4 to 7 the same for the control channel
 *   1 read buffer overflow; bytes dropped                     8 device opened
 *   2 write buffer has run empty                              9 device closed, by vellClose or by itself
 *   3 write buffer full; bytes dropped                       16 device plugged in
 *  35 clear-to-send has changed; 1 on, 0 off                 17 device unplugged
 *                                                            18 listed because of a new identifier pair
 */
#ifndef VELLIO_H
#define VELLIO_H

#include <stdint.h>

#if defined(__GNUC__)
#define VELL_API __attribute__((visibility("default")))
#else
#define VELL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Called with the handle, the user value, the event code and its parameter. Its result is not used. It may call every
 * operation, vellDestroy included; events are not delivered inside one another. */
typedef int32_t (*VellCallBack)(int32_t hVell, intptr_t user, int32_t code, int32_t parameter);

/* -- the handle ---------------------------------------------------------------------------------------------------- */

/* A handle that lists the devices of one vendor and product; -1 means any. 0 when HID devices cannot be reached. */
VELL_API int32_t vellCreate(int32_t vendorId, int32_t productId);
VELL_API void vellDestroy(int32_t hVell); /* closes the device first; no event follows */

VELL_API void vellSetCallBackProc(int32_t hVell, VellCallBack proc, intptr_t user); /* a null procedure: none */
VELL_API void vellSetCallBackWnd(int32_t hVell, int32_t window); /* stored only: there are no window messages here */

/* Takes the oldest event out of the queue without calling back and gives its code; -1 when there is none. Its text is
 * in vellGetParamString. */
VELL_API int32_t vellGetEvent(int32_t hVell);

/* The device text of the event that was delivered last; after a vellOpen that failed, the reason, in plain words. */
VELL_API const char* vellGetParamString(int32_t hVell);

/* Moves reports both ways, looks for plugged and unplugged devices, and queues events; never calls back. True when
 * something new has come in. Call it every millisecond while a device is open and twice a second otherwise. */
VELL_API int16_t vellService(int32_t hVell);
VELL_API void vellDispatch(int32_t hVell); /* delivers the events that are queued now */

/* -- devices ------------------------------------------------------------------------------------------------------- */

VELL_API int32_t vellNumberOfDevice(int32_t hVell);                    /* looks afresh */
VELL_API const char* vellEnumDeviceName(int32_t hVell, int32_t index); /* port name at a zero-based place */
VELL_API const char* vellEnumDevice(int32_t hVell, int32_t index);     /* port name, a blank, the product */
VELL_API const char* vellGetDevicePrefix(int32_t hVell);               /* "HID" at first */
VELL_API void vellSetDevicePrefix(int32_t hVell, const char* prefix);

/* Lists the devices of one more pair from now on; -1 means any. False for a number that is no 16-bit identifier. */
VELL_API int16_t vellAddNewUSBID(int32_t hVell, int32_t vendorId, int32_t productId);
VELL_API int16_t vellDeviceIsUSBID(int32_t hVell, const char* device, int32_t vendorId, int32_t productId);
VELL_API int16_t vellGetDeviceUSBID(int32_t hVell, const char* device, int32_t* vendorId, int32_t* productId);
VELL_API const char* vellGetDeviceManufacturer(int32_t hVell, const char* device);
VELL_API const char* vellGetDeviceProduct(int32_t hVell, const char* device);
VELL_API const char* vellGetDeviceSerialNumber(int32_t hVell, const char* device);
VELL_API const char* vellGetDevicePath(int32_t hVell, const char* device);

/* Looks afresh. True when a device has come or gone since the last call; with the flag, queued device events are
 * delivered before it returns, otherwise they wait for vellDispatch. */
VELL_API int16_t vellCheckDevicesIsChanged(int32_t hVell, int16_t raiseDeviceEvent);

VELL_API int32_t vellGetScanTiming(int32_t hVell); /* ms between two looks of vellService for devices; 500 at first */
VELL_API void vellSetScanTiming(int32_t hVell, int32_t milliseconds); /* 0 to 60000, else unchanged */

/* -- opening ------------------------------------------------------------------------------------------------------- */

/* One device a handle: another one that is open is closed first; the same one stays as it is. While it is open no other
 * handle and no other program opens it through this library: its node is locked (flock). */
VELL_API int16_t vellOpen(int32_t hVell, const char* device);
VELL_API int16_t vellIsInUse(int32_t hVell);      /* the last vellOpen failed because somebody else has the device */
VELL_API void vellClose(int32_t hVell);           /* what waits in the buffers is lost */
VELL_API int16_t vellIsOpen(int32_t hVell);       /* False as well once the open device is found unplugged */
VELL_API int16_t vellIsHIDIOReady(int32_t hVell); /* a device is open and takes reports */

/* -- data stream --------------------------------------------------------------------------------------------------- */

/* Queues bytes and starts sending; the number taken. What does not fit the write buffer is dropped (event 3). */
VELL_API int32_t vellWrite(int32_t hVell, const uint8_t* bytes, int32_t capacity, int32_t start, int32_t count);
VELL_API int32_t vellWritePtr(int32_t hVell, const void* bytes, int32_t count);
VELL_API int32_t vellBytesToWrite(int32_t hVell); /* not yet taken by the device */
VELL_API void vellDiscardWriteBuffer(int32_t hVell);

/* Takes received bytes, the number of them. A report that does not fit the read buffer loses its end (event 1). */
VELL_API int32_t vellRead(int32_t hVell, uint8_t* bytes, int32_t capacity, int32_t start, int32_t count);
VELL_API int32_t vellReadPtr(int32_t hVell, void* bytes, int32_t count);
VELL_API int32_t vellBytesToRead(int32_t hVell);
VELL_API void vellDiscardReadBuffer(int32_t hVell); /* with what the system holds, and so for the control channel */

/* Sizes in bytes, 1 to 1048576, else unchanged; 2048 at first; kept while closed. Bytes beyond a smaller size are
 * dropped as in an overflow. */
VELL_API int32_t vellGetWriteBufferSize(int32_t hVell);
VELL_API void vellSetWriteBufferSize(int32_t hVell, int32_t size);
VELL_API int32_t vellGetReadBufferSize(int32_t hVell);
VELL_API void vellSetReadBufferSize(int32_t hVell, int32_t size);

/* False (at first True): vellWrite and vellWriteCtrl return once the device has taken the bytes, or after the request
 * timeout for each report. */
VELL_API int16_t vellGetAsyncIO(int32_t hVell);
VELL_API void vellSetAsyncIO(int32_t hVell, int16_t async);

VELL_API int16_t vellGetBreak(int32_t hVell);
VELL_API void vellSetBreak(int32_t hVell, int16_t state); /* tells the reader when the state changes */
VELL_API int16_t vellGetCTSHolding(int32_t hVell);        /* as the reader said last; False after opening */

/* -- control channel, beside the data stream; buffers of 1024 bytes each way --------------------------------------- */

/* Queues one whole message, or nothing: False when there is no room for it (event 7). */
VELL_API int16_t vellWriteCtrl(int32_t hVell, const uint8_t* bytes, int32_t capacity, int32_t start, int32_t count);
VELL_API int16_t vellWriteCtrlPtr(int32_t hVell, const void* bytes, int32_t count);
VELL_API int32_t vellBytesToWriteCtrl(int32_t hVell);
VELL_API void vellDiscardWriteCtrlBuffer(int32_t hVell);
VELL_API int32_t vellReadCtrl(int32_t hVell, uint8_t* bytes, int32_t capacity, int32_t start, int32_t count);
VELL_API int32_t vellReadCtrlPtr(int32_t hVell, void* bytes, int32_t count);
VELL_API int32_t vellBytesToReadCtrl(int32_t hVell);
VELL_API void vellDiscardReadCtrlBuffer(int32_t hVell);

/* -- single reports: 64 bytes with the report ID first; a shorter part of an array is a bad argument --------------- */

VELL_API int16_t vellGetInputReport(int32_t hVell, uint8_t* bytes, int32_t capacity, int32_t start, int32_t count);
VELL_API int16_t vellSetOutputReport(int32_t hVell, const uint8_t* bytes, int32_t capacity, int32_t start,
                                     int32_t count);
VELL_API int16_t vellGetFeature(int32_t hVell, uint8_t* bytes, int32_t capacity, int32_t start, int32_t count);
VELL_API int16_t vellSetFeature(int32_t hVell, const uint8_t* bytes, int32_t capacity, int32_t start, int32_t count);
VELL_API int16_t vellGetInputReportPtr(int32_t hVell, void* bytes, int32_t count);
VELL_API int16_t vellSetOutputReportPtr(int32_t hVell, const void* bytes, int32_t count);
VELL_API int16_t vellGetFeaturePtr(int32_t hVell, void* bytes, int32_t count);
VELL_API int16_t vellSetFeaturePtr(int32_t hVell, const void* bytes, int32_t count);

/* How long these and a write that is not asynchronous wait for the device, in ms (1 to 60000, 1000 at first). */
VELL_API int32_t vellGetRequestTimeout(int32_t hVell);
VELL_API void vellSetRequestTimeout(int32_t hVell, int32_t milliseconds);

/* How many input reports are taken from the system at a time (2 to 512, 32 at first). */
VELL_API int16_t vellGetNumberInputBuffers(int32_t hVell, int32_t* count);
VELL_API int16_t vellSetNumberInputBuffers(int32_t hVell, int32_t count);
VELL_API int16_t vellFlushQueue(int32_t hVell); /* drops the input reports that the system holds */

/* The open device's string: 1 manufacturer, 2 product, 3 serial number. */
VELL_API const char* vellGetIndexedString(int32_t hVell, int32_t index);

#ifdef __cplusplus
}
#endif

#endif
