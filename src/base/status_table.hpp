// The built-in statuses and the errno translation, as data.
// SPDX-License-Identifier: MIT
#ifndef ZT_SRC_BASE_STATUS_TABLE_HPP
#define ZT_SRC_BASE_STATUS_TABLE_HPP

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "zt/status.h"

namespace zt::detail {

// Row number and status are the same: a look-up by status is an index.
inline constexpr std::array<zt_status_entry_t, 55> kStatusRows = {{
    {0, "Success", "Success"},
    {1, "Pending", "Pending"},
    {2, "Timeout", "Timeout"},
    {3, "Interrupted", "Interrupted system call"},
    {4, "TryAgain", "Try again"},
    {5, "NotImplemented", "Not implemented"},
    {6, "UnknownError", "Unknown error"},
    {7, "InvalidArgument", "Invalid argument"},
    {8, "OutOfmemory", "Out of memory"},
    {9, "Unsupported", "Unsupported"},
    {10, "FileBusy", "Text file busy"},
    {11, "DeviceBusy", "Device or resource busy"},
    {12, "DeviceLost", "Device lost"},
    {13, "IOError", "I/O error"},
    {14, "ReadError", "Read error"},
    {15, "WriteError", "Write error"},
    {16, "NotExist", "No such object"},
    {17, "TooMany", "Too many objects"},
    {18, "TooLarge", "Object too large"},
    {19, "Overflow", "File table overflow"},
    {20, "Underflow", "Buffer underflow"},
    {21, "FormatError", "Exec format error"},
    {22, "FileExists", "File exists"},
    {23, "FileTypeError", "Not a typewriter"},
    {24, "DeviceTypeError", "Block device required"},
    {25, "IsDirectory", "Is a directory"},
    {26, "ReadOnly", "Read-only file system"},
    {27, "OutOfRange", "Out of range"},
    {28, "BrokenPipe", "Broken pipe"},
    {29, "NoSpace", "No space left on device"},
    {30, "NotDirectory", "Not a directory"},
    {31, "NotPermitted", "Operation not permitted"},
    {32, "BadAddress", "Bad address"},
    {33, "SeekError", "Illegal seek"},
    {34, "CrossDeviceLink", "Cross-device link"},
    {35, "NotInitialized", "Not initialized"},
    {36, "AuthFailed", "Auth failed"},
    {37, "NotLoggedIn", "Not logged in"},
    {38, "WrongState", "Wrong state"},
    {39, "Mismatch", "Type/data mismatch"},
    {40, "VerifyFailed", "Verify failed"},
    {41, "ConstraintViolatin", "Constraint violatin"},
    {42, "Canceled", "Canceled"},
    {43, "InProgress", "In progress"},
    {44, "ConnectionRefused", "Connection refused"},
    {45, "ConnectionReset", "Connection reset"},
    {46, "AddressInUse", "Address in use"},
    {47, "NoResponse", "No response"},
    {48, "InfoChanged", "Info changed"},
    {49, "InvalidData", "Invalid data"},
    {50, "NeedMoreData", "Need more data"},
    {51, "NoBuffer", "No buffer"},
    {52, "BufferTooSmall", "Buffer too small"},
    {53, "BufferIsEmpty", "Buffer is empty"},
    {54, "BufferIsFull", "Buffer is full"},
}};

constexpr bool rows_are_in_status_order() {
    for (size_t i = 0; i < kStatusRows.size(); ++i) {
        if (kStatusRows[i].status != static_cast<zt_status_t>(i)) return false;
    }
    return true;
}
static_assert(rows_are_in_status_order());

// Row numbers in byte order of the code names: serves the look-up by name without ever moving a
// row, so that concurrent look-ups by status cannot see a table in motion.
inline constexpr std::array<uint8_t, kStatusRows.size()> kRowsByCode = [] {
    std::array<uint8_t, kStatusRows.size()> order{};
    for (size_t n = 0; n < order.size(); ++n) {
        size_t place = n;
        const std::string_view code = kStatusRows[n].code;
        for (; place > 0 && code < kStatusRows[order[place - 1]].code; --place) {
            order[place] = order[place - 1];
        }
        order[place] = static_cast<uint8_t>(n);
    }
    return order;
}();

// ENETUNREACH has a number without a built-in row: applications may register one.
inline constexpr zt_status_t kNetworkUnreachable = 55;

inline constexpr size_t kErrnoCount = 116;
static_assert(EINPROGRESS == kErrnoCount - 1 && ETIMEDOUT == 110 && ENETUNREACH == 101,
              "the map is indexed by the generic Linux numbers");

struct ErrnoRow {
    zt_status_t status;
    int errno_value;
};

inline constexpr ErrnoRow kErrnoRows[] = {
    {ZT_STATUS_SUCCESS, 0},
    {ZT_STATUS_TIMEOUT, ETIME},
    {ZT_STATUS_TIMEOUT, ETIMEDOUT},
    {ZT_STATUS_INTERRUPTED, EINTR},
    {ZT_STATUS_TRY_AGAIN, EAGAIN},
    {ZT_STATUS_INVALID_ARGUMENT, EINVAL},
    {ZT_STATUS_OUT_OF_MEMORY, ENOMEM},
    {ZT_STATUS_FILE_BUSY, ETXTBSY},
    {ZT_STATUS_DEVICE_BUSY, EBUSY},
    {ZT_STATUS_IO_ERROR, EIO},
    {ZT_STATUS_NOT_EXIST, ENOENT},
    {ZT_STATUS_NOT_EXIST, ESRCH},
    {ZT_STATUS_NOT_EXIST, ENXIO},
    {ZT_STATUS_NOT_EXIST, EBADF},
    {ZT_STATUS_NOT_EXIST, ECHILD},
    {ZT_STATUS_NOT_EXIST, ENODEV},
    {ZT_STATUS_TOO_MANY, EMFILE},
    {ZT_STATUS_TOO_MANY, EMLINK},
    {ZT_STATUS_TOO_LARGE, E2BIG},
    {ZT_STATUS_TOO_LARGE, EFBIG},
    {ZT_STATUS_OVERFLOW, ENFILE},
    {ZT_STATUS_FORMAT_ERROR, ENOEXEC},
    {ZT_STATUS_FILE_EXISTS, EEXIST},
    {ZT_STATUS_FILE_TYPE_ERROR, ENOTTY},
    {ZT_STATUS_DEVICE_TYPE_ERROR, ENOTBLK},
    {ZT_STATUS_IS_DIRECTORY, EISDIR},
    {ZT_STATUS_READ_ONLY, EROFS},
    {ZT_STATUS_OUT_OF_RANGE, EDOM},
    {ZT_STATUS_OUT_OF_RANGE, ERANGE},
    {ZT_STATUS_BROKEN_PIPE, EPIPE},
    {ZT_STATUS_NO_SPACE, ENOSPC},
    {ZT_STATUS_NOT_DIRECTORY, ENOTDIR},
    {ZT_STATUS_NOT_PERMITTED, EPERM},
    {ZT_STATUS_NOT_PERMITTED, EACCES},
    {ZT_STATUS_BAD_ADDRESS, EFAULT},
    {ZT_STATUS_SEEK_ERROR, ESPIPE},
    {ZT_STATUS_CROSS_DEVICE_LINK, EXDEV},
    {ZT_STATUS_IN_PROGRESS, EINPROGRESS},
    {ZT_STATUS_CONNECTION_REFUSED, ECONNREFUSED},
    {ZT_STATUS_CONNECTION_RESET, ECONNRESET},
    {ZT_STATUS_ADDRESS_IN_USE, EADDRINUSE},
    {kNetworkUnreachable, ENETUNREACH},
};

inline constexpr std::array<uint8_t, kErrnoCount> kStatusByErrno = [] {
    std::array<uint8_t, kErrnoCount> map{};
    map.fill(ZT_STATUS_UNKNOWN_ERROR);
    for (const ErrnoRow &row : kErrnoRows) {
        map[static_cast<size_t>(row.errno_value)] = static_cast<uint8_t>(row.status);
    }
    return map;
}();

}  // namespace zt::detail

#endif  // ZT_SRC_BASE_STATUS_TABLE_HPP
