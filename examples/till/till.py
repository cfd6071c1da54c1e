#!/usr/bin/env python3
"""A till in Python: two sales, a bar code and a QR Code, written to standard output."""

import sys

import klov

SALES = [("Coffee", 2.80), ("Cheese cake", 4.20)]

receipt = klov.Receipt(model="QX-100")
receipt.text("CORNER CAFE", align="centre", size=(2, 2))
for what, price in SALES:
    receipt.columns(what, f"{price:.2f}")
receipt.columns("Total", f"{sum(price for _, price in SALES):.2f}", bold=True)
receipt.feed()
receipt.bar_code("4711")
receipt.qr("https://example.com/4711")
receipt.cut()
sys.stdout.buffer.write(bytes(receipt))
