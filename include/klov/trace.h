/**
 * \file
 * The trace: a private record of what a job does, kept beside the scheduler's log. One trace a process, not guarded
 * against use from several threads. CRC32() stands beside it for programs that check what they recorded or sent; the
 * library itself does not use it.
 */
#ifndef KLOV_TRACE_H
#define KLOV_TRACE_H

#include <klov/export.h>
#include <stdint.h>
#include <stdio.h>

/**
 * The stream that the trace goes to; null before the first klov_trace_init() and after one that failed. It may be
 * stdout, which is never closed. klov_trace_exit() leaves the value as it is, although the trace is closed then: what
 * is written to the stream after that is lost. It is the library's stream: do not close it, and do not set the value.
 */
KLOV_API FILE *klov_trace_handle;

/**
 * Opens the trace, closing the one that was open. The target "stdout" is this process's standard output; anything else
 * is the name of a file, which is made (mode 0666 less the umask) or truncated, or of a device such as a serial
 * console. What is written is appended, so that two processes with one file leave no holes in it, and a trace that
 * would grow beyond 256 MiB ends with the line "trace is full." and counts as closed. Opening never waits and a named
 * pipe is never waited for: without a reader there is no trace, and what a slow reader leaves no room for is dropped.
 * Programs that this process starts do not inherit the descriptor.
 *
 * - Returns errno as it stands after the attempt (see open(2)). It is not cleared first, so that it can be left over
 *   from an earlier call; what tells a failure is a null klov_trace_handle.
 */
KLOV_API int32_t klov_trace_init(const char *target);

/**
 * Writes "[DUMP(count):", then "0x1b " for each of the count bytes (two lower-case hexadecimal digits and a blank),
 * then "]." and a carriage return and line feed to the stream, and flushes the trace (not the stream, unless it is the
 * trace). Does nothing for a null stream or for a trace that is closed. A count below 1 writes no bytes between the
 * brackets.
 */
KLOV_API void klov_trace_dump(FILE *stream, const uint8_t *bytes, int32_t count);

/**
 * Flushes and closes the trace; standard output stays open. Harmless when no trace is open, so also when called twice.
 */
KLOV_API void klov_trace_exit(void);

#ifndef KLOV_NO_SHORT_NAMES

/**
 * The checksum of length bytes at data by IEEE 802.3 (reflected polynomial 0xEDB88320, as crc32() of zlib). Begin with
 * crc 0; pass the previous result to go on with the next piece of the same data.
 */
KLOV_API uint32_t CRC32(uint32_t crc, const uint8_t *data, uint32_t length);

/** The checksum's step for every value of a byte. */
KLOV_API const uint32_t CRC32Tab[256];

#endif

#endif
