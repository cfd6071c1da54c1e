"""What the fault tests share: a small job, and runs of the filter that are measured and held to a time."""

import os
import resource
import subprocess
import threading
from dataclasses import dataclass

import harness
from cases import blank, inked, job, page, roll

TIME_LIMIT = 30.0
ADDRESS_SPACE = 256 << 20  # of a small board
# Leaks cannot be looked for while a program is traced; memory that is not to be had is what the tests are about.
SANITIZED = "detect_leaks=0:allocator_may_return_null=1"


def small_job(version=3, **more):
    """Two pages, one with copies: every part of the filter has something to do."""
    return job(page(*(blank(9, 3) + inked(9, 5) + blank(9, 2))), page(*inked(9, 20), copies=2), version=version,
               ppd=roll(), options="CutMode=1 Drawer1=1", **more)


@dataclass
class Run:
    status: int  # negative: killed by that signal
    stdout: bytes
    stderr: bytes
    peak: int    # most memory in use at a time, in bytes

    def ended_in_order(self):
        """Status 0 with the closing message, or status 1 with one fatal message as the last."""
        if self.status == 0:
            return self.stderr.endswith(b"DEBUG: rastertoklov filter finished (cups:successful-ok)\n")
        return self.status == 1 and self.stderr.count(b"ERROR:Raster(") == 1 and self.stderr.endswith(b")\n")


def is_prefixed():
    return bool(os.environ.get("KLOV_EXEC_PREFIX"))


def is_sanitized():
    """Sanitizers reserve far more address space than there is, and bring their own memory functions."""
    with open(harness.command_line(small_job())[0], "rb") as file:
        return b"__asan_init" in file.read()


def _limit(address_space):
    if address_space is not None:
        resource.setrlimit(resource.RLIMIT_AS, (address_space, address_space))


def run(work, wrapper=(), environment=None, address_space=None, name="fault"):
    """Runs a job whose raster comes from a file; `wrapper` goes before the command line. `name` keeps runs apart."""
    raster_path = harness.write_file(name + ".ras", work.raster)
    return run_command(list(wrapper) + harness.command_line(work), work, raster_path, environment, address_space, name)


def run_command(command, work, raster_path, environment=None, address_space=None, name="fault"):
    variables = harness.environment(work.ppd_path)
    variables["ASAN_OPTIONS"] = ":".join(filter(None, (variables.get("ASAN_OPTIONS"), SANITIZED)))
    variables.update(environment or {})
    out_path, err_path = harness.path(name + ".out"), harness.path(name + ".err")
    with open(raster_path, "rb") as source, open(out_path, "wb") as out, open(err_path, "wb") as err:
        process = subprocess.Popen(command, env=variables, stdin=source, stdout=out, stderr=err,
                                   preexec_fn=None if address_space is None else lambda: _limit(address_space))
        usage = _wait(process)
    with open(out_path, "rb") as out, open(err_path, "rb") as err:
        return Run(process.returncode, out.read(), err.read(), usage.ru_maxrss * 1024)


def _wait(process):
    """The process's end and what it used. One that goes on and on is killed, which no test takes for an end."""
    timer = threading.Timer(TIME_LIMIT, process.kill)
    timer.start()
    _, status, usage = os.wait4(process.pid, 0)
    timer.cancel()
    process.returncode = os.waitstatus_to_exitcode(status)
    return usage
