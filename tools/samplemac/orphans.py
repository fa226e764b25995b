# SPDX-License-Identifier: MIT
"""Leftovers of apps that are no longer installed, beside look-alikes that must never be reported:
leftovers of installed apps, system files, and malformed names and preference files.

EXPECTED maps each group the removed-app scan must report to (grade label, evidence sentence);
NEVER lists identities that must not appear as a group. Both are written to EXPECTATIONS at the
sample's root so that tests assert exactly what was generated."""
import json
import os

EXPECTATIONS = ".kestrune-expected-orphans.json"

HIGH = "Likely removed app"
MEDIUM = "Possible leftover"
UNCERTAIN = "Uncertain match"
WEAK = "Weak match. Review carefully before deleting."

EXPECTED = {
    "com.vanished.writer": (HIGH, "Strong match across 2 locations: Containers, Preferences.", "Writer Pro"),
    "com.vanished.solo": (HIGH, "Strong match across 1 locations: Containers.", "Solo"),
    "com.vanished.paintbox": (HIGH, "Strong match across 3 locations: Application Support, Caches, Preferences.",
                              "Paintbox"),
    "com.vanished.reader": (MEDIUM, "Related files in 3 locations: Caches, Preferences.", "Reader"),
    "com.vanished.browser": (MEDIUM, "Related files in 3 locations: HTTP Storages, Preferences, WebKit.", "Browser"),
    "com.vanished.ghost": (MEDIUM, "Related files in 3 locations: Caches, Saved Application State, WebKit.", "Ghost"),
    "com.vanished.viewer": (UNCERTAIN, WEAK, "Viewer"),
    "com.vanished.twostate": (UNCERTAIN, WEAK, "Twostate"),
    "com.vanished.triple": (UNCERTAIN, WEAK, "Triple"),
    "com.vanished.my-app": (HIGH, "Strong match across 2 locations: Containers, Preferences.", "My App"),
    "com.vanished.truncated": (HIGH, "Strong match across 2 locations: Containers, Preferences.", "Truncated"),
    "com.vanished.garbage": (HIGH, "Strong match across 2 locations: Containers, Preferences.", "Garbage"),
    "com.vanished.enormous": (HIGH, "Strong match across 2 locations: Containers, Preferences.", "Enormous"),
    "com.vanished.locked": (HIGH, "Strong match across 2 locations: Containers, Preferences.", "Locked"),
    "com.vanished.namedbyname": (HIGH, "Strong match across 2 locations: Application Support, Preferences.",
                                 "NamedByName"),
}

NEVER = [
    # too little evidence
    "com.vanished.lonely", "com.vanished.webonly", "com.vanished.cookieonly", "com.vanished.stateonly",
    "name:unknown", "com.vanished.prefonly",
    "com.vanished.triple.binarycookies",
    # components of other apps
    "com.vanished.writer.helper", "com.vanished.crashreporterkit",
    # system and this program
    "com.apple.Safari", "com.apple.finder", "group.com.apple.notes", "com.kestrune.app", "com.applesoft.thing",
    # the shared-name look-alike whose preference file names an installed app
    "com.other.acmenotes",
]

# The 255-byte limit of a file name on Linux caps the long identifier-looking name below that.
LONG_NAME = "com." + "l" * 243 + ".app"


def _prefs(ctx, bundle_id, value, binary=False):
    return ctx.plist(ctx.user(f"Library/Preferences/{bundle_id}.plist"), value, binary=binary)


def _folder_with_files(ctx, path, files=2, size=4_000):
    ctx.folder(path)
    for index in range(files):
        ctx.write(path / f"data{index}.bin", ctx.noise(size))


def _removed_apps(ctx):
    lib = ctx.user("Library")
    _folder_with_files(ctx, lib / "Containers" / "com.vanished.writer", files=3, size=20_000)
    _prefs(ctx, "com.vanished.writer", {"CFBundleName": "Writer Pro", "Window": {"x": 1}})
    _folder_with_files(ctx, lib / "Containers" / "com.vanished.writer.helper")  # a component: dropped
    _folder_with_files(ctx, lib / "Containers" / "com.vanished.crashreporterkit")
    _folder_with_files(ctx, lib / "Containers" / "com.vanished.solo", files=1, size=1_000)

    # Application Support found by name through the preference file's last identifier part.
    _folder_with_files(ctx, lib / "Application Support" / "Paintbox", size=30_000)
    _folder_with_files(ctx, lib / "Caches" / "com.vanished.paintbox")
    _prefs(ctx, "com.vanished.paintbox", {"SomeSetting": True}, binary=True)
    _folder_with_files(ctx, lib / "Application Support" / "com.vanished.lonely")

    _folder_with_files(ctx, lib / "Caches" / "com.vanished.reader")
    ctx.folder(lib / "Caches" / os.fsdecode(b"com.vanished.reader.\xff-cache"))  # not UTF-8, prefix match
    _prefs(ctx, "com.vanished.reader", {"CFBundleDisplayName": "Reader"})

    _prefs(ctx, "com.vanished.browser", {"CFBundleName": "Browser"})
    _folder_with_files(ctx, lib / "WebKit" / "com.vanished.browser")
    ctx.write(lib / "HTTPStorages" / "com.vanished.browser", ctx.noise(500))

    # Its preference file is a dangling link: indexed by name, never recorded.
    ctx.symlink("/nonexistent/com.vanished.ghost.plist", lib / "Preferences" / "com.vanished.ghost.plist")
    _folder_with_files(ctx, lib / "Caches" / "com.vanished.ghost")
    _folder_with_files(ctx, lib / "WebKit" / "com.vanished.ghost")
    _folder_with_files(ctx, lib / "Saved Application State" / "com.vanished.ghost.savedState")

    _prefs(ctx, "com.vanished.viewer", {"CFBundleName": "Viewer"})
    _folder_with_files(ctx, lib / "WebKit" / "com.vanished.viewer")

    _folder_with_files(ctx, lib / "Saved Application State" / "com.vanished.twostate.savedState")
    _folder_with_files(ctx, lib / "WebKit" / "com.vanished.twostate")

    _folder_with_files(ctx, lib / "Saved Application State" / "com.vanished.triple.savedState")
    _folder_with_files(ctx, lib / "WebKit" / "com.vanished.triple")
    ctx.write(lib / "HTTPStorages" / "com.vanished.triple.binarycookies", ctx.noise(300))
    _folder_with_files(ctx, lib / "HTTPStorages" / "com.vanished.triple")

    _folder_with_files(ctx, lib / "WebKit" / "com.vanished.webonly")
    ctx.write(lib / "HTTPStorages" / "com.vanished.cookieonly.binarycookies", ctx.noise(300))
    _folder_with_files(ctx, lib / "Saved Application State" / "com.vanished.stateonly.savedState")
    _folder_with_files(ctx, lib / "Saved Application State" / "com.vanished.stateonly.SAVEDSTATE")
    _prefs(ctx, "com.vanished.prefonly", {"CFBundleName": "Pref Only"})
    _folder_with_files(ctx, lib / "Group Containers" / "shared stuff without identifier")

    # Found by the name the preference file gives, not by identifier.
    _folder_with_files(ctx, lib / "Application Support" / "NamedByName")
    _prefs(ctx, "com.vanished.namedbyname", {"Setting": 1})

    _folder_with_files(ctx, lib / "Containers" / "com.vanished.my-app")
    _prefs(ctx, "com.vanished.my-app", {"LastLaunch": 3})


def _bad_input(ctx):
    lib = ctx.user("Library")
    prefs = lib / "Preferences"
    for name in ("truncated", "garbage", "enormous", "locked"):
        _folder_with_files(ctx, lib / "Containers" / f"com.vanished.{name}", files=1)
    xml = _prefs(ctx, "com.vanished.truncated", {"CFBundleName": "Never Read"}).read_bytes()
    ctx.write(prefs / "com.vanished.truncated.plist", xml[: len(xml) // 2])
    ctx.write(prefs / "com.vanished.garbage.plist", b"bplist00" + ctx.noise(4_000))
    # Past the reader's size limit; sparse, so it costs no disk.
    enormous = ctx.write(prefs / "com.vanished.enormous.plist", b"<?xml version=\"1.0\"?><plist><dict>")
    os.truncate(enormous, 20 * 1024 * 1024)
    locked = _prefs(ctx, "com.vanished.locked", {"Secret": True})
    os.chmod(locked, 0)
    # Names that must neither crash nor match anything.
    for raw in (b"...", b"   ", "\U0001F98A\U0001F98A".encode(), b"caf\xe9-data", b"com.vanished.\xff\xfe"):
        for folder in ("Containers", "Caches", "Application Support", "Group Containers", "WebKit"):
            ctx.folder(lib / folder / os.fsdecode(raw))
    _folder_with_files(ctx, lib / "Containers" / LONG_NAME, files=1)
    EXPECTED[LONG_NAME] = (HIGH, "Strong match across 1 locations: Containers.", "App")


def _system_files(ctx):
    lib = ctx.user("Library")
    for name in ("com.apple.Safari", "com.kestrune.app", "com.applesoft.thing"):
        _folder_with_files(ctx, lib / "Containers" / name)
    _prefs(ctx, "com.apple.finder", {"CFBundleName": "Finder"})
    _folder_with_files(ctx, lib / "Caches" / "com.apple.finder")
    _prefs(ctx, "com.apple.Safari", {"CFBundleName": "Safari"})
    ctx.write(lib / "Preferences" / ".GlobalPreferences.plist", b"")
    for name in ("Google", "Apple", "CrashReporter", "Microsoft", "com.apple"):
        _folder_with_files(ctx, lib / "Application Support" / name)
    _folder_with_files(ctx, lib / "Group Containers" / "group.com.apple.notes")
    _folder_with_files(ctx, lib / "Saved Application State" / "com.apple.Terminal.savedState")


def _installed_look_alikes(ctx):
    """Leftovers of installed apps, which the removed-app scan must leave alone. Names differ from the
    ordinary leftovers the other generator module writes, so neither module changes the other's files;
    every path is listed in ctx.orphan_look_alikes."""
    lib = ctx.user("Library")
    written = []

    def folder(path):
        _folder_with_files(ctx, path, files=1)
        written.append(str(path))

    for index, app in enumerate(ctx.apps):
        if not app.listed or not app.bundle_id:
            continue
        bundle_id = app.bundle_id
        variant = bundle_id.upper() if index % 2 else bundle_id
        folder(lib / "Containers" / f"{variant}.extension")
        folder(lib / "Saved Application State" / f"{bundle_id.upper()}.savedState")
        folder(lib / "WebKit" / f"{variant}.webdata")
        folder(lib / "Group Containers" / f"ZQ9XK2M4P7.{bundle_id}")
        written.append(str(ctx.write(lib / "HTTPStorages" / f"{bundle_id}.binarycookies_v2", b"cookie")))
        if not ctx.large:
            NEVER.extend([f"{variant}.extension", f"ZQ9XK2M4P7.{bundle_id}", bundle_id.upper()])
    for app in ctx.apps:
        # By name: an Application Support folder named after the app with its letter case changed.
        if app.listed and app.name.swapcase() != app.name:
            folder(lib / "Application Support" / app.name.swapcase())
    # A removed app's preference file that gives an installed app's name, in another case.
    _prefs(ctx, "com.other.acmenotes", {"CFBundleName": "ACME NOTES"})
    folder(lib / "Containers" / "com.other.acmenotes")
    ctx.orphan_look_alikes = written


def _second_user(ctx):
    """A second account on the same Mac, whose Library holds only what one app it tried left behind."""
    lib = ctx.root / "Users" / "guest" / "Library"
    _folder_with_files(ctx, lib / "Containers" / "com.vanished.sketchpad", files=1, size=1_500)
    ctx.plist(lib / "Preferences" / "com.vanished.sketchpad.plist", {"CFBundleName": "Sketchpad"})


def _large(ctx):
    lib = ctx.user("Library")
    rng = ctx.rng
    for index in range(5_000):
        bundle_id = f"org.vendor{index % 97}.tool-{index:04d}"
        value = {"Count": index}
        if index % 3:
            value["CFBundleName"] = f"Tool {index:04d}"
        _prefs(ctx, bundle_id, value, binary=index % 2 == 0)
    # Most caches are named after their identifier, as on a real Mac; a few only after the app's name,
    # and a few after nothing known at all.
    for index in range(3_000):
        target = rng.randrange(5_000)
        if index % 50 == 0:
            name = f"Tool {target:04d} Cache"
        elif index % 50 == 1:
            name = f"net.unknown{index}.cache"
        elif index % 2:
            name = f"org.vendor{target % 97}.tool-{target:04d}.ShipIt"
        else:
            name = f"org.vendor{target % 97}.tool-{target:04d}"
        _folder_with_files(ctx, lib / "Caches" / name, files=1, size=200)
    for index in range(2_000):
        if index % 4 == 0:
            name = f"org.vendor{index % 97}.tool-{index:04d}"
        elif index % 4 == 1:
            installed = index % 500
            name = f"com.bulk{installed % 37}.app{installed:03d}"
        else:
            name = f"io.container{index}.app"
        _folder_with_files(ctx, lib / "Containers" / name, files=1, size=300)


def build(ctx):
    _removed_apps(ctx)
    _bad_input(ctx)
    _system_files(ctx)
    _installed_look_alikes(ctx)
    _second_user(ctx)
    if ctx.large:
        _large(ctx)
    expected = {key: {"confidence": grade, "evidenceSummary": evidence, "displayName": name}
                for key, (grade, evidence, name) in EXPECTED.items()}
    ctx.write(ctx.root / EXPECTATIONS, json.dumps({"expected": expected, "never": NEVER}, indent=1))
