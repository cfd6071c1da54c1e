"""Runs the filter as the scheduler runs it, and collects all that it leaves behind.

KLOV_FILTER names the program; KLOV_EXEC_PREFIX, if set, is put in front of it ("valgrind -q", "qemu-arm -L sysroot");
KLOV_TIMEOUT is the longest that one run may take, in seconds.
"""

import atexit
import os
import shlex
import shutil
import stat
import subprocess
import tempfile

import private_tmp
from outcome import Outcome

TRACE = "/tmp/klov-raster"
HOLD_FILE = "/home/klov/rastertoklov.hold"
TIMEOUT = float(os.environ.get("KLOV_TIMEOUT", "60"))

_PASSED_ON = ("ASAN_", "UBSAN_", "LSAN_", "QEMU_", "LLVM_", "GCOV_", "VALGRIND_", "LD_LIBRARY_PATH")

_state = {"ready": False, "private": False}
_descriptors_closed = {"stdin": 0, "stdout": 1, "stderr": 2}


def prepare():
    """Once per process, before the first run: a private /tmp and a folder for the runs' files."""
    if _state["ready"]:
        return
    program = os.environ.get("KLOV_FILTER")
    if not program:
        raise RuntimeError("KLOV_FILTER must name the filter program")
    prefix = shlex.split(os.environ.get("KLOV_EXEC_PREFIX", ""))
    needed = [program, __file__, os.getcwd()] + [word for word in prefix if word.startswith("/")]
    _state["command"] = prefix + [os.path.abspath(program)]
    _state["private"] = private_tmp.enter(needed)
    _state["folder"] = tempfile.mkdtemp(prefix="klov-process-")
    atexit.register(shutil.rmtree, _state["folder"], ignore_errors=True)
    _state["ready"] = True


def has_private_tmp():
    return _state["private"]


def path(name):
    return os.path.join(_state["folder"], name)


def write_file(name, data):
    target = path(name)
    with open(target, "wb") as file:
        file.write(data)
    return target


def remove_trace():
    try:
        mode = os.lstat(TRACE).st_mode
    except FileNotFoundError:
        return
    if stat.S_ISDIR(mode):
        os.rmdir(TRACE)
    else:
        os.unlink(TRACE)


def read_trace():
    """The trace; None when there is no ordinary file in its place."""
    if not os.path.isfile(TRACE):
        return None
    with open(TRACE, "rb") as file:
        return file.read()


def environment(ppd_path):
    result = {"PATH": os.environ.get("PATH", "/usr/bin:/bin"), "LC_ALL": "C"}
    result.update({name: value for name, value in os.environ.items() if name.startswith(_PASSED_ON)})
    # A sanitized filter is to get a null pointer, as the system gives it, when it asks for too much memory.
    result["ASAN_OPTIONS"] = ":".join(filter(None, (result.get("ASAN_OPTIONS"), "allocator_may_return_null=1")))
    if ppd_path is not None:
        result["PPD"] = os.fsdecode(ppd_path)
    return result


def command_line(job, raster_path=None):
    """The words after the program's name, as many as the job says."""
    words = [b"17", b"user", b"title", b"9", job.options, os.fsencode(raster_path or "/nowhere/page.ras"), b"surplus"]
    return _state["command"] + words[:job.arguments - 1]


def place_ppd(job):
    """Writes the job's PPD, or what is none, if the job's path is the place for it; any other path stays as it is."""
    if job.ppd_path == os.fsencode(path("test.ppd")):
        write_file("test.ppd", b"this is no PPD\n" if job.ppd is None else job.ppd.text())


def start(job, raster_path=None, closed=(), **streams):
    """Starts the filter; `closed` names standard streams that it is to find closed."""
    place_ppd(job)
    remove_trace()

    def before_exec():
        for name in closed:
            os.close(_descriptors_closed[name])

    return subprocess.Popen(command_line(job, raster_path), env=environment(job.ppd_path),
                            preexec_fn=before_exec if closed else None, **streams)


def run(job, by_file=False, keep_trace_place=False, **streams):
    """Runs a job to its end. The raster comes on standard input, or as the named file."""
    place_ppd(job)
    if not keep_trace_place:
        remove_trace()
    raster_path = None
    if job.arguments == 7:
        raster_path = write_file("page.ras", job.raster) if job.file_opens else path("not-there.ras")
        by_file = True
    source = write_file("stdin.ras", b"" if by_file else job.raster)
    with open(source, "rb") as standard_input:
        done = subprocess.run(command_line(job, raster_path), env=environment(job.ppd_path), stdin=standard_input,
                              stdout=streams.get("stdout", subprocess.PIPE),
                              stderr=streams.get("stderr", subprocess.PIPE), timeout=TIMEOUT, check=False)
    return Outcome(done.stdout or b"", done.stderr or b"", read_trace(), done.returncode).masked()
