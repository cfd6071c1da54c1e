/**
 * \file
 * Result codes of libklov.
 *
 * Every function that can fail returns a signed 32-bit code: KLOV_OK, one of the negative codes below, or a positive
 * errno value where a system call failed. klov_format_error_ansi() turns a code into words. (The 1 of
 * klov_printer_model_get_manufacture_modelnames_wchar() is no errno: it says that there are no models.)
 *
 * The library itself returns KLOV_OK and -1, -2, -3, -6, -8, -9 and -30. The others are for the programs around it, so
 * that every part of a printing system can report through one list of texts.
 */
#ifndef KLOV_RESULT_H
#define KLOV_RESULT_H

/* clang-format off */
#define KLOV_OK                           0    /**< success */
#define KLOV_E_PARAMETER                (-1)   /**< a parameter is out of its range */
#define KLOV_E_BUFFER_TOO_SMALL         (-2)   /**< null buffer, or not enough room in it */
#define KLOV_E_MODEL_TYPE               (-3)   /**< the printer class does not know the command */
#define KLOV_E_PRINTER_NOT_SUPPORTED    (-4)   /**< the printer is not supported */
#define KLOV_E_HANDLE                   (-6)   /**< null handle, or one that is not valid any more */
#define KLOV_E_NOT_IMPLEMENTED          (-7)   /**< not implemented */
#define KLOV_E_UNKNOWN_MODEL            (-8)   /**< the model is not in the catalogue */
#define KLOV_E_NO_MEMORY                (-9)   /**< out of memory */
#define KLOV_E_WRONG_PRINTER           (-10)   /**< another printer than the one asked for */
#define KLOV_E_ENVIRONMENT             (-11)   /**< the environment is not set up */
#define KLOV_E_IMAGE_LOAD              (-21)   /**< an image cannot be loaded */
#define KLOV_E_IMAGE_SIZE              (-25)   /**< an image is too small or too large */
#define KLOV_E_REPLY_FORMAT            (-30)   /**< a printer's reply text has the wrong form */
#define KLOV_E_PRINT                  (-100)   /**< printing failed */
#define KLOV_E_DRIVER_DATA            (-101)   /**< the driver's data are damaged */
#define KLOV_E_PRINTER_STATE          (-102)   /**< the printer is in a state that does not allow this */
#define KLOV_E_IO                     (-300)   /**< a port failed */
#define KLOV_E_IO_SETTING             (-301)   /**< a port's settings are not valid */
#define KLOV_E_IO_NAME_TOO_LONG       (-302)   /**< a port's name is too long */
#define KLOV_E_OS_VERSION             (-304)   /**< the operating system is too old */
#define KLOV_E_IO_HANDLE              (-308)   /**< a port's handle is not valid */
#define KLOV_E_IO_NOT_OPEN            (-309)   /**< the port is not open */
#define KLOV_E_IO_ALREADY_OPEN        (-310)   /**< the port is open already */
#define KLOV_E_IO_OPEN                (-311)   /**< a port cannot be opened */
#define KLOV_E_IO_GET_ATTRIBUTES      (-312)   /**< a port's settings cannot be read */
#define KLOV_E_IO_SET_ATTRIBUTES      (-313)   /**< a port's settings cannot be changed */
#define KLOV_E_IO_WRITE               (-321)   /**< writing to a port failed */
#define KLOV_E_IO_WRITE_TIMEOUT       (-322)   /**< writing to a port took too long */
#define KLOV_E_IO_READ                (-331)   /**< reading from a port failed */
#define KLOV_E_IO_READ_TIMEOUT        (-332)   /**< reading from a port took too long */
#define KLOV_E_IO_FLUSH               (-341)   /**< a port cannot be flushed */
#define KLOV_E_SERIAL_BAUDRATE        (-351)   /**< the serial speed is not valid */
#define KLOV_E_NET_CONNECT            (-352)   /**< no network connection to the printer */
#define KLOV_E_SERIAL_HANDSHAKE       (-361)   /**< the serial flow control is not valid */
#define KLOV_E_USB_PATH               (-371)   /**< the USB path is not valid */
#define KLOV_E_USB_NOT_FOUND          (-372)   /**< no such USB printer */
#define KLOV_E_USB_BUSY               (-373)   /**< the USB printer is in use */
#define KLOV_E_MSR_NOT_READY          (-401)   /**< the magnetic stripe reader is not ready */
#define KLOV_E_SCR_NOT_READY          (-411)   /**< the smart card reader is not ready */
#define KLOV_E_HEAD_ENCRYPT_SET       (-501)   /**< the encrypting head cannot be set up */
#define KLOV_E_HEAD_DECRYPT           (-511)   /**< the encrypting head's data cannot be decrypted */
/* -1100 plus the libusb-1.0 error value. */
#define KLOV_LIBUSB_SUCCESS          (-1100)   /**< USB: no error */
#define KLOV_LIBUSB_ERROR_IO         (-1101)   /**< USB: input or output failed */
#define KLOV_LIBUSB_ERROR_INVALID_PARAM (-1102)/**< USB: a parameter is not valid */
#define KLOV_LIBUSB_ERROR_ACCESS     (-1103)   /**< USB: permission denied */
#define KLOV_LIBUSB_ERROR_NO_DEVICE  (-1104)   /**< USB: no such device */
#define KLOV_LIBUSB_ERROR_NOT_FOUND  (-1105)   /**< USB: not found */
#define KLOV_LIBUSB_ERROR_BUSY       (-1106)   /**< USB: the device is in use */
#define KLOV_LIBUSB_ERROR_TIMEOUT    (-1107)   /**< USB: the device took too long */
#define KLOV_LIBUSB_ERROR_OVERFLOW   (-1108)   /**< USB: more data than expected */
#define KLOV_LIBUSB_ERROR_PIPE       (-1109)   /**< USB: the endpoint stalled */
#define KLOV_LIBUSB_ERROR_INTERRUPTED (-1110)  /**< USB: interrupted by a signal */
#define KLOV_LIBUSB_ERROR_NO_MEM     (-1111)   /**< USB: out of memory */
#define KLOV_LIBUSB_ERROR_NOT_SUPPORTED (-1112)/**< USB: not supported on this platform */
#define KLOV_LIBUSB_ERROR_OTHER      (-1199)   /**< USB: another error */
/* clang-format on */

#endif
