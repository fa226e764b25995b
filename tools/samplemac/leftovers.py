# SPDX-License-Identifier: MIT
"""Leftovers of the installed apps in every place the installed-app scan looks, with the awkward cases:
per-host preferences, lock files, launch items matched by content or only by name, broken launch lists,
privileged helpers, Spotlight answers, unreadable folders, dangling links, a link loop in a cache.
The large scale adds a crowded Library and one app (Brightline) whose cache holds 30,000 entries."""
import os

from .apps import info

KNOWN_FOLDERS = ("Application Support", "Caches", "Preferences", "Containers", "Group Containers", "Logs",
                 "Saved Application State", "WebKit", "HTTPStorages", "LaunchAgents")


def _find(ctx, identifier):
    return next(app for app in ctx.apps if app.bundle_id == identifier)


def _launch(identifier, program, arguments=None):
    value = {"Label": identifier, "Program": program, "RunAtLoad": True}
    if arguments is not None:
        value["ProgramArguments"] = arguments
    return value


def _acme(ctx):
    """Acme Notes (com.acme.notes): something in every known location and every listed folder."""
    app = _find(ctx, "com.acme.notes")
    ident, name = app.bundle_id, app.name
    home = ctx.user
    ctx.write(home(f"Library/Application Support/{name}/notes.db"), ctx.noise(9_000))
    ctx.write(home(f"Library/Application Support/{ident}/state.json"), b"{}")
    ctx.write(home(f"Library/Caches/{ident}/Cache.db"), ctx.noise(5_000))
    ctx.write(home(f"Library/Caches/{name}/thumbs/1.png"), ctx.noise(1_000))
    ctx.plist(home(f"Library/Preferences/{ident}.plist"), {"LastOpened": "today"})
    ctx.write(home(f"Library/Preferences/{ident}.plist.lockfile"))
    ctx.plist(home(f"Library/Preferences/ByHost/{ident}.0A1B2C3D.plist"), {"Host": 1})
    ctx.plist(home(f"Library/Preferences/ByHost/{ident}X.plist"), {"Host": 2})  # prefix includes the dot
    ctx.write(home(f"Library/Containers/{ident}/Data/Library/Caches/c.bin"), ctx.noise(3_000))
    ctx.write(home(f"Library/Logs/{name}/acme.log"), b"started\n")
    ctx.write(home(f"Library/Logs/{ident}/crash.log"), b"crashed\n")
    ctx.write(home(f"Library/Saved Application State/{ident}.savedState/windows.plist"), b"x")
    ctx.write(home(f"Library/WebKit/{ident}/WebsiteData/LocalStorage/db"), ctx.noise(700))
    ctx.write(home(f"Library/HTTPStorages/{ident}/httpstorages.sqlite"), ctx.noise(600))
    ctx.write(home(f"Library/Internet Plug-Ins/{name}.plugin/Contents/MacOS/plug"), ctx.noise(800))
    ctx.write(ctx.system(f"/Library/Internet Plug-Ins/{name}.plugin/Contents/MacOS/plug"), ctx.noise(800))
    ctx.write(home(f"Library/PreferencePanes/{name}.prefPane/Contents/MacOS/pane"), ctx.noise(500))
    ctx.write(ctx.system(f"/Library/PreferencePanes/{name}.prefPane/Contents/MacOS/pane"), ctx.noise(500))
    ctx.write(ctx.system(f"/Library/Application Support/{name}/license.key"), b"KEY")
    ctx.write(ctx.system(f"/Library/Application Support/{ident}/shared.db"), ctx.noise(400))
    ctx.plist(ctx.system(f"/Library/Preferences/{ident}.plist"), {"Managed": True})
    ctx.write(ctx.system(f"/Library/PrivilegedHelperTools/{ident}.helper"), ctx.noise(2_000))
    # Listed folders: every entry whose name holds a term.
    ctx.write(home(f"Library/Group Containers/XYZ123.{ident}/shared.db"), ctx.noise(1_200))
    ctx.write(home("Library/Audio/Plug-Ins/Components/readme.txt"), b"not acme")  # a name without a term
    ctx.write(home("Library/Audio/Plug-Ins/Vendor Reverb.component/Contents/x"), b"x")
    ctx.write(home(f"Library/Audio/Plug-Ins/{name} Reverb.component/Contents/x"), ctx.noise(300))
    ctx.write(ctx.system(f"/Library/Audio/Plug-Ins/{name} EQ.component/Contents/x"), ctx.noise(300))
    ctx.write(home(f"Library/Input Methods/{name} Input.app/Contents/x"), ctx.noise(300))
    ctx.write(home(f"Library/Services/{name} Clip.workflow/Contents/x"), ctx.noise(300))
    ctx.write(home(f"Library/Scripts/{name} Export.scpt"), ctx.noise(200))
    ctx.write(home("Library/Caches/com.acme.notes.ShipIt/update.zip"), ctx.noise(4_000))
    ctx.write(home(f"Library/Application Support/{name} Helper/helper.db"), ctx.noise(900))
    # The short last piece "notes" also reaches another vendor's folder: the rule accepts it.
    ctx.write(home("Library/Application Support/com.other.stickynotes/data"), b"other vendor")
    # Launch items: by a top-level string value, by file name only, nested mention only.
    ctx.plist(home("Library/LaunchAgents/com.other.agent.plist"),
              _launch("com.other.agent", f"/Applications/{name}.app/Contents/MacOS/{name}"))
    ctx.plist(home(f"Library/LaunchAgents/{ident}.sync.plist"), _launch("sync", "/usr/bin/true"), binary=True)
    ctx.plist(home("Library/LaunchAgents/com.nested.agent.plist"),
              _launch("com.nested.agent", "/usr/bin/env", [f"/Applications/{name}.app/Contents/MacOS/x"]))
    ctx.write(home(f"Library/LaunchAgents/{ident}.broken.plist"), b"<?xml version=\"1.0\"?><plist><dict><key>")
    ctx.write(home(f"Library/LaunchAgents/{ident}.garbage.plist"), b"bplist00" + bytes(range(256)) * 4)
    ctx.plist(home(f"Library/LaunchAgents/{ident}.array.plist"), ["not", "a", "dictionary"])
    ctx.write(home("Library/LaunchAgents/com.garbage.other.plist"), b"\xff\xfe\x00garbage")
    ctx.plist(ctx.system("/Library/LaunchAgents/com.vendor.updater.plist"),
              _launch("com.vendor.updater", f"/Library/Application Support/{ident}/updater"))
    ctx.plist(ctx.system(f"/Library/LaunchDaemons/{ident}.helper.plist"),
              _launch(f"{ident}.helper", f"/Library/PrivilegedHelperTools/{ident}.helper"))
    ctx.plist(ctx.system("/Library/LaunchDaemons/com.unrelated.daemon.plist"), _launch("x", "/usr/sbin/x"))
    # Spotlight: pieces everywhere, a copy in Downloads, a translocated copy, and paths found already.
    downloads = home(f"Downloads/{name}.app")
    ctx.plist(downloads / "Contents" / "Info.plist", info(name, ident))
    ctx.write(downloads / "Contents" / "MacOS" / name, ctx.noise(3_000))
    translocated = ctx.system(f"/private/var/folders/zz/T/AppTranslocation/4F2A/d/{name}.app")
    ctx.plist(translocated / "Contents" / "Info.plist", info(name, ident))
    ctx.write(translocated / "Contents" / "MacOS" / name, ctx.noise(3_000))
    ctx.spotlight_answers[ident] = [
        home(f"Library/Containers/{ident}.share-extension"),
        home(f"Library/Group Containers/group.{ident}"),
        home(f"Library/Application Support/CloudSync/{ident}.bundle"),
        home(f"Library/Caches/Spotlight/{ident}.index"),
        home(f"Library/Containers/{ident}"),            # the known-location table reached it first
        home(f"Library/LaunchAgents/{ident}.sync.plist"),  # the launch-item scan reached it first
        ctx.system("/tmp/acme-export.noteslib"),
        home("Library/Caches/gone-since-indexing"),      # indexed, then deleted
    ]
    for path in ctx.spotlight_answers[ident][:4]:
        ctx.write(path / "payload", ctx.noise(250))
    ctx.write(ctx.system("/tmp/acme-export.noteslib"), ctx.noise(100))


def _others(ctx):
    """Go (short names), the app without an identifier, and a one-item trace for every other app."""
    home = ctx.user
    ctx.write(home("Library/Application Support/Go/config"), b"go")        # known location by name
    ctx.write(home("Library/Application Support/Gopher Tools/x"), b"x")     # "go" is too short to list
    ctx.plist(home("Library/Preferences/com.example.go.plist"), {"a": 1})
    ctx.write(home("Library/Caches/Anon Cache/x"), ctx.noise(100))          # fallback: name "anon"
    ctx.write(home("Library/Logs/anon.log"), b"log")
    for app in ctx.apps:
        if app.bundle_id and app.listed and app.bundle_id not in ("com.acme.notes", "com.example.go"):
            ctx.write(home(f"Library/Caches/{app.bundle_id}/Cache.db"), ctx.noise(700))
            ctx.plist(home(f"Library/Preferences/{app.bundle_id}.plist"), {"k": app.name})


def _hazards(ctx):
    """Things a scan must pass over: unreadable folders, dangling links, a link loop inside a cache."""
    home = ctx.user
    brightline = _find(ctx, "io.brightline.Brightline")
    cache = home(f"Library/Caches/{brightline.bundle_id}")
    ctx.write(cache / "fsCachedData" / "A1", ctx.noise(1_000))
    ctx.symlink("loop-b", cache / "loop-a")
    ctx.symlink("loop-a", cache / "loop-b")
    ctx.symlink("..", cache / "fsCachedData" / "parent")  # a loop through a folder link
    ctx.symlink("/nonexistent/target", home("Library/Caches/io.brightline.Brightline.dangling"))
    ctx.symlink("gone", home("Library/Application Support/Brightline"))  # dangling known location
    locked = ctx.folder(home("Library/Input Methods"))
    ctx.write(locked / "Brightline Input.app" / "Contents" / "x", b"x")
    ctx.folder(home("Library/Services"))
    os.chmod(locked, 0o000)
    os.chmod(ctx.folder(home("Library/HTTPStorages")), 0o300)  # listable no, enterable yes


def _large(ctx):
    """A crowded Library (other vendors everywhere) and a 30,000-entry cache for Brightline."""
    home = ctx.user
    count = 0
    for folder in KNOWN_FOLDERS:
        for index in range(5_600):
            name = f"com.vendor{index % 97:02d}.tool{index:05d}"
            if folder == "Preferences":
                ctx.write(home(f"Library/Preferences/{name}.plist"), b"p")
            elif folder == "LaunchAgents":
                if index < 400:
                    ctx.plist(home(f"Library/LaunchAgents/{name}.plist"), _launch(name, f"/opt/{name}/run"))
                else:
                    continue
            else:
                ctx.write(home(f"Library/{folder}/{name}"), b"x")
            count += 1
    cache = home("Library/Caches/io.brightline.Brightline/ImageCache")
    for bucket in range(100):
        for index in range(299):
            ctx.write(cache / f"{bucket:02x}" / f"{index:04x}", b"img")
    assert count >= 50_000


def build(ctx):
    _acme(ctx)
    _others(ctx)
    _hazards(ctx)
    if ctx.large:
        _large(ctx)
