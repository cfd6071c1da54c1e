"""All models as the scheduler sees them, and one of every hardware family that really prints."""

import os
import re

import documents
import escpos
import support
from support import PrintTest, tables


def setUpModule():
    global cups, ticket
    cups = support.start_scheduler()
    folder = support.work_folder()
    ticket = documents.write_pdf(os.path.join(folder, "ticket.pdf"), [documents.title("Ticket 1") + documents.image()],
                                 width=130)


class Catalogue(PrintTest):
    def test_the_scheduler_lists_every_model_once(self):
        listed = sorted(name for address, name in cups.drivers().items() if address.startswith("drv:///klov.drv/"))
        self.assertEqual(listed, sorted(model["identity"] for model in tables.drivable_models()))

    def test_a_device_id_finds_its_model(self):
        for name in ("QX-200", "EL-480"):
            model = next(model for model in tables.drivable_models() if model["name"] == name)
            found = cups.run("lpinfo", "--device-id", "MFG:%s;MDL:%s;" % (model["manufacturer"], name), "-m").stdout
            self.assertRegex(found.splitlines()[0], r"^drv:///klov.drv/.* %s$" % re.escape(model["identity"]))


class Families(PrintTest):
    def test_one_model_of_every_family_prints_its_dots(self):
        families = {}
        for model in tables.drivable_models():
            families.setdefault((model["id"], model["width"], model["class"]), model)
        self.assertGreater(len(families), 20)
        addresses = {name: address for address, name in cups.drivers().items()}
        for number, ((_, width, kind), model) in enumerate(families.items()):
            with self.subTest(model["identity"]):
                queue = cups.add_queue("f%d" % number, os.path.basename(addresses[model["identity"]]))
                kept, raster_path = cups.keep_raster(queue)
                data = cups.print(kept, ticket)
                pages = self.assert_same_dots(data, raster_path, width // 8)
                self.assertEqual([page.width for page in pages], [width])
                self.assert_finished_like(kind, escpos.read_commands(data))

    def assert_finished_like(self, kind, commands):
        finish = {"receipt": [escpos.Cut(66, 0)], "label": [escpos.NextLabel()], "mobile": []}
        self.assertEqual(escpos.others(commands), finish[kind])
        self.assertEqual(escpos.blank_tail(commands), support.dots(10) if kind == "mobile" else 0)
