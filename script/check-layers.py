#!/usr/bin/env python3
"""Checks that each folder includes only what its layer may know.

The linker already keeps widgets out of the core; this keeps the platform from knowing stations, and
the computation from knowing forms.
"""
import pathlib
import re
import subprocess
import sys

# The chart is part of the core: it knows no form.
CHART = ["app", "compute", "graphs", "platform/ado", "platform/desktop", "platform/text", "store"]

# Folder, longest prefix first, and the folders whose headers it may include.
LAYERS = {
    "platform/text": ["platform/text"],
    "platform/access": ["platform/access", "platform/text"],
    "platform/ado": ["platform/ado", "platform/text"],
    "platform/desktop": ["platform/desktop", "platform/text"],
    "platform/qt": ["platform"],
    "app/main.cpp": ["app", "forms", "platform", "store"],
    "app/SharedState.cpp": ["app", "compute", "graphs", "platform", "store"],
    "app": ["app", "platform/desktop", "platform/text"],
    "store": ["app", "platform/access", "platform/ado", "platform/desktop", "platform/text", "store"],
    "import/frmImport": ["forms/reference", "import", "platform", "store"],
    "import": ["import", "platform/ado", "platform/desktop", "platform/text", "store"],
    "compute": ["compute", "platform/ado", "platform/desktop", "platform/text", "store"],
    "graphs/Chart": CHART,
    "graphs/ChartAxes": CHART,
    "graphs/ChartSeries": CHART,
    "graphs": ["app", "compute", "forms", "graphs", "platform", "store"],
    "help": ["app", "help", "platform"],
    "forms": ["app", "compute", "forms", "graphs", "help", "import", "platform", "store"],
}


def main() -> int:
    include = re.compile(r'^#include "([^"]+/[^"]+)"', re.MULTILINE)
    files = subprocess.run(["git", "ls-files", "*.cpp", "*.h"], check=True, text=True,
                           capture_output=True).stdout.split()
    faults = []
    for name in files:
        layer = max((key for key in LAYERS if name == key or name.startswith((key + "/", key + "."))),
                    key=len, default=None)
        if layer is None:
            continue
        for header in include.findall(pathlib.Path(name).read_text(encoding="utf-8")):
            if not any(header.startswith(allowed + "/") for allowed in LAYERS[layer]):
                faults.append(f"{name}: may not include {header}")
    print("\n".join(faults) if faults else f"Layers: {len(files)} files in order.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
