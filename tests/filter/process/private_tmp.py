"""Gives this process a /tmp of its own, because the filter's trace file has one fixed name for the whole machine.

A private mount namespace with an empty /tmp lets many test processes run side by side. Where namespaces are not to be
had (in some containers), a lock on one file makes the processes take turns instead.
"""

import ctypes
import fcntl
import os

CLONE_NEWNS, CLONE_NEWUSER = 0x00020000, 0x10000000
MS_RDONLY, MS_REMOUNT, MS_BIND, MS_REC, MS_PRIVATE = 1, 32, 4096, 16384, 1 << 18
MNT_DETACH = 2

_libc = ctypes.CDLL(None, use_errno=True)
_lock_file = None


def _call(name, *arguments):
    if getattr(_libc, name)(*arguments) != 0:
        error = ctypes.get_errno()
        raise OSError(error, "%s: %s" % (name, os.strerror(error)))


def mount(source, target, kind=None, flags=0, data=None):
    def text(value):
        return None if value is None else os.fsencode(value)
    _call("mount", text(source), text(target), text(kind), ctypes.c_ulong(flags), text(data))


def unmount(target, lazily=False):
    """Takes off the topmost mount; lazily: with whatever is mounted within it."""
    _call("umount2", os.fsencode(target), MNT_DETACH if lazily else 0)


def enter(needed):
    """True when the process now has its own /tmp and /home, in which the `needed` paths can still be reached."""
    try:
        _leave_shared_mounts()
        for directory in ("/tmp", "/home"):
            _empty(directory, needed)
        return True
    except OSError:
        _take_turns()
        return False


def _leave_shared_mounts():
    if os.geteuid() == 0:
        _call("unshare", CLONE_NEWNS)
    else:
        user, group = os.geteuid(), os.getegid()
        _call("unshare", CLONE_NEWUSER | CLONE_NEWNS)
        _write("/proc/self/setgroups", "deny")
        _write("/proc/self/uid_map", "0 %d 1" % user)
        _write("/proc/self/gid_map", "0 %d 1" % group)
    mount(None, "/", None, MS_REC | MS_PRIVATE)


def _write(path, text):
    with open(path, "w", encoding="ascii") as file:
        file.write(text)


def _empty(directory, needed):
    """Covers the directory by an empty one, but for the parts of it in which needed paths lie."""
    if not os.path.isdir(directory):
        return
    kept = {}
    for path in needed:
        for form in (os.path.abspath(path), os.path.realpath(path)):
            if form.startswith(directory + "/"):
                part = os.path.join(directory, form[len(directory) + 1:].split("/")[0])
                if os.path.isdir(part):
                    kept.setdefault(part, os.open(part, os.O_PATH))
    mount("tmpfs", directory, "tmpfs")
    os.chmod(directory, 0o1777)
    for part, descriptor in kept.items():
        os.mkdir(part)
        mount("/proc/self/fd/%d" % descriptor, part, None, MS_BIND | MS_REC)
        os.close(descriptor)


def _take_turns():
    global _lock_file
    _lock_file = open("/tmp/klov-raster.lock", "a", encoding="ascii")
    fcntl.flock(_lock_file, fcntl.LOCK_EX)
