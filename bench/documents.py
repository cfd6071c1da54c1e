"""Documents beside CUPS's own way, with the same rastertoklov: documents.py BUILD OUT [--quick].

CPU time of each chain from the document to the printer's bytes, the least of the rounds; memory and growth of pdftoroll
on long pages; and the time from lp to the first byte at the printer, through a private cupsd."""

import os
import resource
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.dirname(HERE)
STOCK = subprocess.run(["cups-config", "--serverbin"], capture_output=True, text=True).stdout.strip() + "/filter/"
PPD = "qx100.ppd"
# What cupsd starts for the type on Debian 12 without our MIME files.
CHAINS = {
    "PDF receipt": ("receipt.pdf", ["pdftopdf", "gstoraster"], ["pdftoroll"], 0.5),
    "text of 40 lines": ("text.txt", ["texttopdf", "pdftopdf", "gstoraster"], ["texttoroll"], 0.45),
    "photo": ("photo.png", ["imagetoraster"], ["imagetoroll"], 0.25),
}
TYPES = {".pdf": "application/pdf", ".txt": "text/plain", ".png": "image/png"}


def write_documents(folder):
    sys.path.insert(0, os.path.join(SOURCE, "tests", "e2e"))
    import documents
    os.symlink(os.path.join(SOURCE, "examples", "receipt.pdf"), os.path.join(folder, "receipt.pdf"))
    with open(os.path.join(folder, "text.txt"), "w", encoding="ascii") as text:
        for number in range(40):
            text.write("%2d  A line of a plain text     %6.2f\n" % (number + 1, number * 1.37))
    import struct
    import zlib
    width, height = 1200, 900
    rows = b"".join(b"\0" + bytes((x * 3 + y * 2 + (x * y >> 9) * 31) % 256 for x in range(width))
                    for y in range(height))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    with open(os.path.join(folder, "photo.png"), "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) +
                   chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))
    for metres in (1, 10, 30):
        lines = "".join("BT /F 10 Tf 10 %d Td (Line %d of a long receipt  12.50) Tj ET\n" % (y, y)
                        for y in range(20, metres * 2834, 14))
        documents.write_pdf(os.path.join(folder, "long%d.pdf" % metres), [lines], height=metres * 2834.6)


def run_chain(filters, document, environment):
    """CPU seconds of the processes, and the most memory (KB) of the first."""
    kind = TYPES[os.path.splitext(document)[1]]
    environment = dict(os.environ, CONTENT_TYPE=kind, FINAL_CONTENT_TYPE="application/vnd.cups-raster", PRINTER="bench",
                       CHARSET="utf-8", LANG="en_US.UTF-8", **environment)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    source = subprocess.DEVNULL
    processes = []
    for i, program in enumerate(filters):
        last = i == len(filters) - 1
        processes.append(subprocess.Popen(
            [program, "1", "user", "title", "1", ""] + ([document] if i == 0 else []), stdin=source, env=environment,
            stdout=subprocess.DEVNULL if last else subprocess.PIPE, stderr=subprocess.DEVNULL))
        if source not in (None, subprocess.DEVNULL):
            source.close()
        source = processes[-1].stdout
    _, status, usage = os.wait4(processes[0].pid, 0)
    processes[0].returncode = os.waitstatus_to_exitcode(status)
    for process in processes:
        process.wait()
        if process.returncode:
            raise RuntimeError("%s: status %d" % (filters, process.returncode))
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, usage.ru_maxrss


def compare_chains(build, folder, rounds):
    environment = {"PPD": os.path.join(build, "ppd", "ppd", PPD)}
    last = os.path.join(build, "filter", "rastertoklov")
    lines = ["| Document | CUPS's way | document filters | Ratio | Bound |", "|---|---|---|---|---|"]
    for title, (name, stock, own, bound) in CHAINS.items():
        document = os.path.join(folder, name)
        stock_times, own_times = [], []
        for _ in range(rounds):
            stock_times.append(run_chain([STOCK + f for f in stock] + [last], document, environment)[0])
            own_filters = [os.path.join(build, "pages", f) for f in own]
            own_times.append(run_chain(own_filters + [last], document, environment)[0])
        ratio = min(own_times) / min(stock_times)
        lines.append("| %s | %.0f ms | %.0f ms | %.2f | %.2f |" % (
            title, min(stock_times) * 1000, min(own_times) * 1000, ratio, bound))
    return lines


def long_pages(build, folder, rounds):
    environment = {"PPD": os.path.join(build, "ppd", "ppd", PPD)}
    lines = ["| Page | pdftoroll | Memory |", "|---|---|---|"]
    times = {}
    for metres in (1, 10, 30):
        runs = [run_chain([os.path.join(build, "pages", "pdftoroll")], os.path.join(folder, "long%d.pdf" % metres),
                          environment) for _ in range(1 if metres == 30 else rounds)]
        times[metres] = min(run[0] for run in runs)
        lines.append("| %d m | %.0f ms | %.0f MB |" % (metres, times[metres] * 1000, max(r[1] for r in runs) / 1024))
    receipt = run_chain([os.path.join(build, "pages", "pdftoroll")], os.path.join(folder, "receipt.pdf"), environment)
    lines += ["| receipt | %.0f ms | %.0f MB |" % (receipt[0] * 1000, receipt[1] / 1024), "",
              "10 m take %.1f times as long as 1 m (bound: 40)." % (times[10] / times[1])]
    return lines


def first_byte(cups, listener_class, document, rounds):
    times = []
    for _ in range(rounds):
        with listener_class() as printer:
            cups.add_queue("clock", PPD, printer.device)
            start = time.monotonic()
            job = cups.submit("clock", document)
            cups.wait_for(lambda: printer.first)
            times.append(printer.first - start)
            cups.wait_for_job(job)
    return statistics.median(times)


def compare_first_bytes(build, folder, rounds):
    os.environ.update(KLOV_SOURCE=SOURCE, KLOV_FILTER=os.path.join(build, "filter", "rastertoklov"),
                      KLOV_DRV_DIR=os.path.join(build, "ppd"), KLOV_PAGES_DIR=os.path.join(build, "pages"))
    import socket
    import threading

    from scheduler import Scheduler

    class Clock:
        """A printer that notes when its first byte comes."""

        def __enter__(self):
            self.first = None
            self.socket = socket.create_server(("127.0.0.1", 0))
            self.device = "socket://127.0.0.1:%d/?waiteof=false" % self.socket.getsockname()[1]
            threading.Thread(target=self.accept, daemon=True).start()
            return self

        def accept(self):
            connection, _ = self.socket.accept()
            with connection:
                while connection.recv(65536):
                    self.first = self.first or time.monotonic()

        def __exit__(self, *_):
            self.socket.close()

    found = []
    for own in (False, True):
        with Scheduler(documents=own) as cups:
            found.append(first_byte(cups, Clock, os.path.join(folder, "receipt.pdf"), rounds))
    return ["From lp to the printer's first byte: CUPS's way %.0f ms, document filters %.0f ms, ratio %.2f "
            "(bound: 0.6)." % (found[0] * 1000, found[1] * 1000, found[1] / found[0])]


def main():
    build, out = map(os.path.abspath, sys.argv[1:3])
    rounds = 3 if "--quick" in sys.argv else 12
    with tempfile.TemporaryDirectory() as folder:
        write_documents(folder)
        lines = compare_chains(build, folder, rounds) + [""] + long_pages(build, folder, min(rounds, 5)) + [""]
        lines += compare_first_bytes(build, folder, rounds)
    text = "\n".join(lines) + "\n"
    sys.stdout.write(text)
    with open(os.path.join(out, "documents.txt"), "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
