"""Prints what klovstatus costs a good job: processor time of the whole process, start included.

    KLOV_STATUS=build/release/talk/klovstatus python3 tests/talk/cost.py
"""

import os
import threading

from till import Till

MONITOR = os.environ["KLOV_STATUS"]
JOB = (b"\x1dv0\0\x48\0\xc8\0" + bytes(72 * 200)) * 20


def one_job(data=JOB):
    """Milliseconds of one run, and what the printer printed."""
    till = Till()
    job_read, job = os.pipe()
    printer_read, out = os.pipe()
    reply_read, reply_write = os.pipe()
    places = [os.dup(fd) for fd in (job_read, out, reply_read)]
    low = [place for place in places if place > 3]
    actions = [(os.POSIX_SPAWN_DUP2, places[0], 0), (os.POSIX_SPAWN_DUP2, places[1], 1),
               (os.POSIX_SPAWN_DUP2, places[2], 3)]
    assert len(low) == 3, "descriptor 3 is taken"
    child = os.posix_spawn(MONITOR, [MONITOR, "1", "u", "t", "1", ""], {"DEVICE_URI": "socket://x", "LANG": "C"},
                           file_actions=actions)
    for fd in (job_read, out, reply_read, *places):
        os.close(fd)
    printer = threading.Thread(target=till.serve, args=(printer_read, reply_write))
    printer.start()
    sent = 0
    while sent < len(data):
        sent += os.write(job, data[sent:sent + 65536])
    os.close(job)
    _, status, usage = os.wait4(child, 0)
    printer.join()
    os.close(printer_read)
    os.close(reply_write)
    assert status == 0
    return (usage.ru_utime + usage.ru_stime) * 1000, bytes(till.printed)


def main():
    costs = sorted(one_job()[0] for _ in range(50))
    print("klovstatus, a job of %d bytes: %.2f ms of processor time (median of 50), %.2f at least" % (
        len(JOB), costs[25], costs[0]))


if __name__ == "__main__":
    main()
