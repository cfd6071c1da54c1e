"""A private cupsd: its own folders, a domain socket, a free loopback port, our filter and our driver file."""

import glob
import grp
import os
import pwd
import re
import shutil
import socket
import subprocess
import tempfile
import time

import ipp

FILTER = os.environ["KLOV_FILTER"]
DRV_DIR = os.environ["KLOV_DRV_DIR"]
SOURCE = os.environ["KLOV_SOURCE"]
PAGES_DIR = os.environ.get("KLOV_PAGES_DIR", "")
DOCUMENT_FILTERS = ("pdftoroll", "imagetoroll", "texttoroll")
CANCELED, ABORTED, COMPLETED, STOPPED = 7, 8, 9, 6
PATIENCE = 60


def cups_config(name, fallback):
    try:
        return subprocess.run(["cups-config", "--" + name], capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return fallback


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Scheduler:
    """with Scheduler() as cups: ...; always stopped at the end. With documents=True our document filters take the
    documents, otherwise CUPS's own."""

    def __init__(self, documents=False):
        self.documents = documents
        self.root = tempfile.mkdtemp(prefix="klov-e2e-")
        os.chmod(self.root, 0o755)
        self.socket = self.root + "/cups.sock"
        self.process = None
        self.port = None
        self.jobs = []

    def __enter__(self):
        try:
            self.build_folders()
            for _ in range(5):      # somebody else may take the port before cupsd does
                self.port = free_port()
                self.write_configuration()
                if self.start():
                    return self
            raise RuntimeError("cupsd does not start:\n" + self.log()[-4000:])
        except BaseException:
            self.__exit__()
            raise

    def __exit__(self, *_):
        if self.process and self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        shutil.rmtree(self.root, ignore_errors=True)

    # --- set-up

    def build_folders(self):
        for folder in ("etc/ppd", "spool/tmp", "cache", "run", "log", "out", "bin/filter",
                       "data/drv", "data/model", "data/mime"):
            os.makedirs(os.path.join(self.root, folder))
        stock = cups_config("serverbin", "/usr/lib/cups")
        for name in os.listdir(stock):
            if name != "filter":
                os.symlink(os.path.join(stock, name), os.path.join(self.root, "bin", name))
        for path in glob.glob(stock + "/filter/*"):
            if os.path.basename(path) not in ("rastertoklov", "commandtoklov", *DOCUMENT_FILTERS):
                os.symlink(path, os.path.join(self.root, "bin/filter", os.path.basename(path)))
        self.filter = os.path.join(self.root, "bin/filter/rastertoklov")
        shutil.copyfile(FILTER, self.filter)
        os.chmod(self.filter, 0o755)
        # CUPS warns of a queue whose driver names a filter that is not there.
        commands = os.path.join(os.path.dirname(DRV_DIR), "talk/commandtoklov")
        if os.path.exists(commands):
            shutil.copy(commands, os.path.join(self.root, "bin/filter"))
        data = cups_config("datadir", "/usr/share/cups")
        for name in os.listdir(data):
            if name not in ("drv", "model", "mime"):
                os.symlink(os.path.join(data, name), os.path.join(self.root, "data", name))
        for path in glob.glob(data + "/mime/*"):
            if not os.path.basename(path).startswith("klov."):
                os.symlink(path, os.path.join(self.root, "data/mime", os.path.basename(path)))
        if self.documents:
            self.add_document_filters()
        if self.documents:      # a driver of another maker's, to see that its queues stay as they are
            os.symlink(data + "/drv/sample.drv", os.path.join(self.root, "data/drv/sample.drv"))
        for name in ("klov.drv", "klov-zh_CN.po"):
            shutil.copyfile(os.path.join(DRV_DIR, name), os.path.join(self.root, "data/drv", name))
        self.own("out", "spool/tmp")

    def add_document_filters(self):
        """The filters that were built, and the MIME files that bring documents to them."""
        for name in DOCUMENT_FILTERS:
            built = os.path.join(PAGES_DIR, name)
            if os.path.exists(built):
                shutil.copyfile(built, os.path.join(self.root, "bin/filter", name))
                os.chmod(os.path.join(self.root, "bin/filter", name), 0o755)
        for name in ("klov.types", "klov.convs"):
            shutil.copyfile(os.path.join(SOURCE, "pages", name), os.path.join(self.root, "data/mime", name))

    def own(self, *folders):
        """Filters of a scheduler that root runs are user lp."""
        if os.geteuid() == 0:
            lp = pwd.getpwnam("lp")
            for folder in folders:
                os.chown(os.path.join(self.root, folder), lp.pw_uid, lp.pw_gid)

    def write_configuration(self):
        user = "lp" if os.geteuid() == 0 else pwd.getpwuid(os.geteuid()).pw_name
        group = "lp" if os.geteuid() == 0 else grp.getgrgid(os.getegid()).gr_name
        places = dict(ServerRoot="etc", ServerBin="bin", DataDir="data", RequestRoot="spool", CacheDir="cache",
                      StateDir="run", TempDir="spool/tmp", AccessLog="log/access", ErrorLog="log/error",
                      PageLog="log/page")
        with open(self.root + "/etc/cups-files.conf", "w") as conf:
            for key, folder in places.items():
                conf.write("%s %s\n" % (key, os.path.join(self.root, folder)))
            conf.write("FileDevice Yes\nUser %s\nGroup %s\nSystemGroup %s\nSyncOnClose No\n" % (
                user, group, "root" if os.geteuid() == 0 else group))
        with open(self.root + "/etc/cupsd.conf", "w") as conf:
            conf.write("Listen 127.0.0.1:%d\nListen %s\nLogLevel debug\nMaxLogSize 0\nBrowsing Off\nWebInterface No\n"
                       "DefaultAuthType None\nMaxJobs 1000\nPreserveJobFiles No\nJobKillDelay 60\n"
                       "<Location />\nOrder allow,deny\nAllow all\n</Location>\n"
                       "<Location /admin>\nOrder allow,deny\nAllow all\n</Location>\n"
                       "<Policy default>\nJobPrivateAccess all\nJobPrivateValues none\n"
                       "<Limit All>\nOrder allow,deny\nAllow all\n</Limit>\n</Policy>\n" % (self.port, self.socket))

    def start(self):
        if os.path.exists(self.socket):
            os.unlink(self.socket)
        self.process = subprocess.Popen(
            [shutil.which("cupsd", path=os.environ["PATH"] + ":/usr/sbin") or "cupsd", "-f",
             "-c", self.root + "/etc/cupsd.conf", "-s", self.root + "/etc/cups-files.conf"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return self.wait_for(self.ready, alive=True)

    def ready(self):
        return self.run("lpstat", "-r", check=False).stdout.startswith("scheduler is running")

    def wait_for(self, condition, alive=False):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            if alive and self.process.poll() is not None:
                return False
            if condition():
                return True
            time.sleep(0.02)
        return False

    # --- use

    def run(self, *command, check=True, tcp=False):
        environment = dict(os.environ, LC_ALL="C.UTF-8",
                           CUPS_SERVER="127.0.0.1:%d" % self.port if tcp else self.socket)
        result = subprocess.run(command, capture_output=True, text=True, env=environment)
        if check and result.returncode:
            raise RuntimeError("%s: %s%s" % (" ".join(command), result.stdout, result.stderr))
        return result

    def drivers(self):
        """The scheduler's own list: address to name."""
        lines = self.run("lpinfo", "-m").stdout.splitlines()
        return dict(line.split(" ", 1) for line in lines)

    def add_queue(self, name, driver, device=None, *options):
        """A queue with one of our drivers; without a device it prints to a file of its own."""
        source = ["-P", driver] if driver.startswith("/") else ["-m", "drv:///klov.drv/" + driver]
        self.run("lpadmin", "-p", name, "-E", "-v", device or "file://" + self.output_path(name), *source,
                 *[word for option in options for word in ("-o", option)])
        # A queue on a network printer may get the driver file's port monitor by itself; here the filter's bytes count.
        if (device or "").startswith("socket:"):
            self.run("lpadmin", "-p", name, "-o", "port-monitor=none")
        return name

    def ppd(self, queue):
        return os.path.join(self.root, "etc/ppd", queue + ".ppd")

    def output_path(self, queue):
        return os.path.join(self.root, "out", queue + ".bin")

    def output(self, queue):
        with open(self.output_path(queue), "rb") as output:
            return output.read()

    def submit(self, queue, document, *options, copies=1):
        words = [word for option in options for word in ("-o", option)]
        result = self.run("lp", "-d", queue, "-n", str(copies), *words, document)
        job = int(re.search(r"request id is \S+-(\d+)", result.stdout)[1])
        self.jobs.append(job)
        return job

    def job(self, job):
        return ipp.get_job(self.socket, job)

    def wait_for_job(self, job, expected=COMPLETED):
        over = (CANCELED, ABORTED, COMPLETED, STOPPED)
        state = None

        def ended():
            nonlocal state
            state = self.job(job).get("job-state")
            return state in over
        self.wait_for(ended)
        if state != expected:
            raise AssertionError("job %d is in state %s, not %s:\n%s" % (job, state, expected, self.job_log(job)))

    def print(self, queue, document, *options, copies=1):
        """Prints and returns the bytes that reached the queue's file."""
        self.wait_for_job(self.submit(queue, document, *options, copies=copies))
        return self.output(queue)

    def log(self):
        path = self.root + "/log/error"
        if not os.path.exists(path):
            return ""
        with open(path, encoding="utf-8", errors="replace") as log:
            return log.read()

    def job_log(self, job):
        return "\n".join(line for line in self.log().splitlines() if "[Job %d]" % job in line)

    def keep_raster(self, queue):
        """A second queue with the same PPD whose filter also keeps the raster that CUPS made."""
        name = queue + "-kept"
        raster = os.path.join(self.root, "out", name + ".ras")
        script = os.path.join(self.root, "bin/filter", name)
        with open(script, "w") as text:
            text.write('#!/bin/sh\ntee "%s" | "%s" "$@"\n' % (raster, self.filter))
        os.chmod(script, 0o755)
        with open(self.ppd(queue), encoding="utf-8") as original:
            ppd = original.read()
        changed = os.path.join(self.root, name + ".ppd")
        with open(changed, "w", encoding="utf-8") as copy:
            copy.write(ppd.replace(" rastertoklov\"", " %s\"" % name))
        self.add_queue(name, changed)
        return name, raster
