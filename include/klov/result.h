/*
 * Result codes of libklov. Every function that can fail returns a signed 32-bit code: KLOV_OK, one of the negative codes
 * below, or a positive errno value where a system call failed. klov_format_error_ansi() turns a code into words.
 */
#ifndef KLOV_RESULT_H
#define KLOV_RESULT_H

/* clang-format off */
#define KLOV_OK                           0    /* success */
#define KLOV_E_PARAMETER                (-1)   /* a parameter is out of its range */
#define KLOV_E_BUFFER_TOO_SMALL         (-2)   /* null buffer, or not enough room in it */
#define KLOV_E_MODEL_TYPE               (-3)   /* the printer class does not know the command */
#define KLOV_E_PRINTER_NOT_SUPPORTED    (-4)
#define KLOV_E_HANDLE                   (-6)
#define KLOV_E_NOT_IMPLEMENTED          (-7)
#define KLOV_E_UNKNOWN_MODEL            (-8)   /* the model is not in the catalogue */
#define KLOV_E_NO_MEMORY                (-9)
#define KLOV_E_WRONG_PRINTER           (-10)
#define KLOV_E_ENVIRONMENT             (-11)
#define KLOV_E_IMAGE_LOAD              (-21)
#define KLOV_E_IMAGE_SIZE              (-25)
#define KLOV_E_REPLY_FORMAT            (-30)   /* a printer's reply text has the wrong form */
#define KLOV_E_PRINT                  (-100)
#define KLOV_E_DRIVER_DATA            (-101)
#define KLOV_E_PRINTER_STATE          (-102)
#define KLOV_E_IO                     (-300)
#define KLOV_E_IO_SETTING             (-301)
#define KLOV_E_IO_NAME_TOO_LONG       (-302)
#define KLOV_E_OS_VERSION             (-304)
#define KLOV_E_IO_HANDLE              (-308)
#define KLOV_E_IO_NOT_OPEN            (-309)
#define KLOV_E_IO_ALREADY_OPEN        (-310)
#define KLOV_E_IO_OPEN                (-311)
#define KLOV_E_IO_GET_ATTRIBUTES      (-312)
#define KLOV_E_IO_SET_ATTRIBUTES      (-313)
#define KLOV_E_IO_WRITE               (-321)
#define KLOV_E_IO_WRITE_TIMEOUT       (-322)
#define KLOV_E_IO_READ                (-331)
#define KLOV_E_IO_READ_TIMEOUT        (-332)
#define KLOV_E_IO_FLUSH               (-341)
#define KLOV_E_SERIAL_BAUDRATE        (-351)
#define KLOV_E_NET_CONNECT            (-352)
#define KLOV_E_SERIAL_HANDSHAKE       (-361)
#define KLOV_E_USB_PATH               (-371)
#define KLOV_E_USB_NOT_FOUND          (-372)
#define KLOV_E_USB_BUSY               (-373)
#define KLOV_E_MSR_NOT_READY          (-401)
#define KLOV_E_SCR_NOT_READY          (-411)
#define KLOV_E_HEAD_ENCRYPT_SET       (-501)
#define KLOV_E_HEAD_DECRYPT           (-511)
/* -1100 plus the libusb-1.0 error value. */
#define KLOV_LIBUSB_SUCCESS          (-1100)
#define KLOV_LIBUSB_ERROR_IO         (-1101)
#define KLOV_LIBUSB_ERROR_INVALID_PARAM (-1102)
#define KLOV_LIBUSB_ERROR_ACCESS     (-1103)
#define KLOV_LIBUSB_ERROR_NO_DEVICE  (-1104)
#define KLOV_LIBUSB_ERROR_NOT_FOUND  (-1105)
#define KLOV_LIBUSB_ERROR_BUSY       (-1106)
#define KLOV_LIBUSB_ERROR_TIMEOUT    (-1107)
#define KLOV_LIBUSB_ERROR_OVERFLOW   (-1108)
#define KLOV_LIBUSB_ERROR_PIPE       (-1109)
#define KLOV_LIBUSB_ERROR_INTERRUPTED (-1110)
#define KLOV_LIBUSB_ERROR_NO_MEM     (-1111)
#define KLOV_LIBUSB_ERROR_NOT_SUPPORTED (-1112)
#define KLOV_LIBUSB_ERROR_OTHER      (-1199)
/* clang-format on */

#endif
