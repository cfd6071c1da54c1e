"""Makes PPD files, and says what CUPS finds in them.

The description of a PPD is data: `text()` writes the file that the filter gets, `marked()` and `right_edge()` say what
ppdMarkDefaults, ppdFindMarkedChoice and ppdPageSize make of it.
"""

import re
from dataclasses import dataclass, field

from numbers_c import f32


@dataclass
class Option:
    keyword: str
    choices: tuple
    default: str | None = None  # None: no *Default line; may also be a text that is no choice


@dataclass
class Size:
    name: str
    area: tuple | None = None       # left, bottom, right, top in points
    dimension: tuple | None = None  # width, length in points


@dataclass
class Ppd:
    short_nick_name: str | None = "QX-100"
    options: list = field(default_factory=list)
    sizes: list = field(default_factory=list)
    default_size: str | None = None
    variable: bool = False               # custom sizes are allowed
    margins: tuple = (0, 0, 0, 0)        # left, bottom, right, top of custom sizes
    damaged: bytes | None = None         # the file's bytes, when they are not to be a PPD at all

    def text(self):
        if self.damaged is not None:
            return self.damaged
        lines = ['*PPD-Adobe: "4.3"', '*FormatVersion: "4.3"', '*FileVersion: "1.0"', "*LanguageVersion: English",
                 "*LanguageEncoding: ISOLatin1", '*PCFileName: "TEST.PPD"', '*Manufacturer: "Test"',
                 '*Product: "(Test)"', '*ModelName: "Test Printer"', '*NickName: "Test Printer, 1.0"']
        if self.short_nick_name is not None:
            lines.append('*ShortNickName: "%s"' % self.short_nick_name)
        lines += ['*PSVersion: "(3010.000) 0"', "*ColorDevice: False", '*cupsVersion: 2.4', "*cupsManualCopies: True"]
        if self.variable:
            lines += ["*VariablePaperSize: True", "*HWMargins: %s" % " ".join("%g" % m for m in self.margins),
                      '*MaxMediaWidth: "3000"', '*MaxMediaHeight: "9000"', '*CustomPageSize True: "pop"',
                      "*ParamCustomPageSize Width: 1 points 1 3000", "*ParamCustomPageSize Height: 2 points 1 9000"]
        for option in self.all_options():
            lines += ["*OpenUI *%s/%s: PickOne" % (option.keyword, option.keyword),
                      "*OrderDependency: 10 AnySetup *%s" % option.keyword]
            if option.default is not None:
                lines.append("*Default%s: %s" % (option.keyword, option.default))
            lines += ['*%s %s/%s: ""' % (option.keyword, choice, choice) for choice in option.choices]
            lines.append("*CloseUI: *%s" % option.keyword)
        for size in self.sizes:
            if size.area is not None:
                lines.append('*ImageableArea %s/%s: "%s"' % (size.name, size.name, " ".join(map(str, size.area))))
            if size.dimension is not None:
                lines.append('*PaperDimension %s/%s: "%s"' % (size.name, size.name, " ".join(map(str, size.dimension))))
        return ("\n".join(lines) + "\n").encode("latin-1")

    def all_options(self):
        if not self.sizes:
            return self.options
        names = tuple(size.name for size in self.sizes)
        return [Option("PageSize", names, self.default_size)] + list(self.options)

    def marked(self, keyword):
        """The default choice as the PPD spells it, or None: no such option, no default, or a default that is none."""
        for option in self.all_options():
            if option.keyword.lower() != keyword.lower() or option.default is None:
                continue
            if keyword == "PageSize" and self.variable and option.default.startswith("Custom."):
                return b"Custom"
            for choice in option.choices:
                if choice.lower() == option.default.lower():
                    return choice.encode("latin-1")
        return None

    def right_edge(self, name):
        """The imageable area's right edge of a size in points, or None when CUPS does not find the size."""
        text = name.decode("latin-1")
        if text.startswith("Custom.") and self.variable:
            return self._custom_right_edge(text)
        if text == "Custom" and self.variable:
            default = self.default_size or ""
            found = self._custom_right_edge(default) if default.startswith("Custom.") else None
            return 0.0 if found is None else found
        for size in self.sizes:
            if size.name.lower() == text.lower():
                return 0.0 if size.area is None else f32(float(size.area[2]))
        return None

    def _custom_right_edge(self, text):
        match = re.fullmatch(r"Custom\.(\d+(?:\.\d+)?)x(\d+(?:\.\d+)?)(mm|cm|m|in|ft|pt)?", text)
        if match is None:
            return None
        factor = {"mm": 72.0 / 25.4, "cm": 72.0 / 2.54, "m": 72.0 / 0.0254, "in": 72.0, "ft": 12.0 * 72.0}
        width = float(match.group(1)) * factor.get(match.group(3), 1.0)
        return f32(width - f32(self.margins[2]))
