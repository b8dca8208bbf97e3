#!/usr/bin/env python3
"""Fails on a quoted #include that points up the layers, naming the file and line.

A file belongs to the layer of the longest folder prefix below that matches its path; an include may
name its own layer or one listed before it. Folders not listed (tests, bench) are not checked.
Usage: check_layers.py <source root>
"""
import os
import re
import sys

# Bottom first. Folders of one layer may include each other.
LAYERS = [
    ("foundation", ["foundation"]),
    ("tools", ["render/tools"]),
    ("dsp", ["dsp"]),
    ("media", ["recording", "playback"]),
    ("model", ["project/model", "timeline/model"]),
    ("render", ["render", "cleaning"]),
    ("shell", ["app/core", "app/cli"]),
    ("ui", ["ui", "project/panels", "timeline/view", "app/windows"]),
    ("app", ["app"]),
]
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')


def layer_of(path):
    best, best_len = None, -1
    for index, (_, folders) in enumerate(LAYERS):
        for folder in folders:
            if (path == folder or path.startswith(folder + "/")) and len(folder) > best_len:
                best, best_len = index, len(folder)
    return best


def included_layer(source, include):
    beside = os.path.normpath(os.path.join(os.path.dirname(source), include))
    for candidate in (include, beside):
        found = layer_of(candidate)
        if found is not None:
            return found
    return None


def main(root):
    errors = []
    for folder, dirs, files in os.walk(root):
        dirs[:] = [d for d in dirs if not d.startswith(".") and not d.startswith("build")]
        for name in sorted(files):
            if not name.endswith((".h", ".cpp")):
                continue
            source = os.path.relpath(os.path.join(folder, name), root)
            own = layer_of(source)
            if own is None:
                continue
            with open(os.path.join(root, source), encoding="utf-8", errors="replace") as text:
                for number, line in enumerate(text, 1):
                    match = INCLUDE.match(line)
                    if not match:
                        continue
                    target = included_layer(source, match.group(1))
                    if target is not None and target > own:
                        errors.append(f"{source}:{number}: includes {match.group(1)}: "
                                      f"{LAYERS[own][0]} may not include {LAYERS[target][0]}")
    for error in errors:
        print(error)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1] if len(sys.argv) > 1 else "."))
