# SPDX-License-Identifier: MIT
"""Apps with many identifiers (extensions, login items, XPC services, helpers, privileged helpers) and
what they leave under each; Apple's own apps and data; identifiers ending in generic words; neighbours
whose names contain each other; a removed app known only by its launch items.

OWNERS maps paths (relative to the sample root) to the app that owns them, written to OWNERSHIP at the
sample's root: a scan of any other app may list such a path, but only as that owner's. EMBEDDED lists,
per app, the files named by its embedded identifiers that its own scan must find."""
import json

from . import orphans
from .apps import _bundle, info

OWNERSHIP = ".kestrune-expected-owners.json"
MACOS = "macOS"


def _launch(label, program=None, arguments=None, **extra):
    value = {"Label": label, "RunAtLoad": True}
    if program is not None:
        value["Program"] = program
    if arguments is not None:
        value["ProgramArguments"] = arguments
    value.update(extra)
    return value


class _Owned:
    """Writes files and remembers whose each one is."""

    def __init__(self, ctx):
        self.ctx = ctx
        self.owners = {}
        self.embedded = {}

    def _record(self, path, owner):
        self.owners[str(path.relative_to(self.ctx.root))] = owner
        return path

    def file(self, owner, path, data=b"x"):
        return self._record(self.ctx.write(path, data), owner)

    def folder(self, owner, path):
        self.ctx.write(path / "data.bin", self.ctx.noise(500))
        return self._record(path, owner)

    def plist(self, owner, path, value):
        return self._record(self.ctx.plist(path, value), owner)

    def expect_embedded(self, app, path):
        self.embedded.setdefault(app, []).append(str(path.relative_to(self.ctx.root)))


def _embedded(ctx, bundle, relative, identifier, name):
    """An embedded bundle with its own information list."""
    inner = bundle / "Contents" / relative
    ctx.plist(inner / "Contents" / "Info.plist", info(name, identifier))
    ctx.write(inner / "Contents" / "MacOS" / name, ctx.noise(2_000))


def _harbor(ctx, owned):
    """Harbor Desktop (io.harbor.desktop, generic last word): every kind of embedded bundle."""
    apps = ctx.system("/Applications")
    app = _bundle(ctx, apps, "Harbor Desktop.app", dict(info("Harbor Desktop", "io.harbor.desktop"),
                                                        CFBundleExecutable="Harbor Desktop"))
    bundle = app.path
    _embedded(ctx, bundle, "PlugIns/Harbor Share.appex", "io.harbor.desktop.share-extension", "Harbor Share")
    _embedded(ctx, bundle, "Library/LoginItems/Harbor Login.app", "io.harbor.loginhelper", "Harbor Login")
    _embedded(ctx, bundle, "XPCServices/Harbor Fetch.xpc", "io.harbor.fetch", "Harbor Fetch")
    _embedded(ctx, bundle, "Frameworks/Harbor Helper (GPU).app", "io.harbor.desktop.helper.gpu", "Harbor Helper")
    _embedded(ctx, bundle, "Library/QuickLook/Harbor Preview.appex", "io.harbor.quicklook", "Harbor Preview")
    ctx.write(bundle / "Contents" / "Library" / "LaunchServices" / "io.harbor.vmnetd", ctx.noise(3_000))

    name, ident = "Harbor Desktop", "io.harbor.desktop"
    home, system = ctx.user, ctx.system
    for identifier in ("io.harbor.desktop.share-extension", "io.harbor.fetch", "io.harbor.loginhelper", "io.harbor.quicklook"):
        owned.expect_embedded(name, owned.folder(name, home(f"Library/Containers/{identifier}")))
        owned.expect_embedded(name, owned.folder(name, home(f"Library/Application Scripts/{identifier}")))
        owned.expect_embedded(name, owned.plist(name, home(f"Library/Preferences/{identifier}.plist"), {"k": 1}))
    owned.expect_embedded(name, owned.file(name, system("/Library/PrivilegedHelperTools/io.harbor.vmnetd"), ctx.noise(1_000)))
    # Launch items with ProgramArguments only: by their label, and by their program inside the bundle.
    owned.expect_embedded(name, owned.plist(name, system("/Library/LaunchDaemons/io.harbor.vmnetd.plist"),
                                            _launch("io.harbor.vmnetd", arguments=["/Library/PrivilegedHelperTools/io.harbor.vmnetd"])))
    owned.expect_embedded(name, owned.plist(name, home("Library/LaunchAgents/io.harbor.autostart.plist"),
                                            _launch("io.harbor.autostart", arguments=[
                                                f"/Applications/{name}.app/Contents/MacOS/{name}", "--hidden"])))
    owned.plist(name, system("/Library/LaunchDaemons/io.harbor.backupd.plist"),
                _launch("io.harbor.backupd", program=f"/Applications/{name}.app/Contents/Library/LaunchServices/io.harbor.vmnetd"))
    owned.plist(name, system("/Library/LaunchAgents/io.harbor.tray.plist"),
                _launch("io.harbor.tray", BundleProgram="Contents/MacOS/Harbor Desktop", AssociatedBundleIdentifiers=[ident]))
    # Kept outside the bundle: an input method that says whose it is only in its information list, and
    # an updater in a folder named by the identifier, started by a launch agent of another label.
    keys = home(f"Library/Input Methods/{name} Keys.app")
    ctx.plist(keys / "Contents" / "Info.plist", info(f"{name} Keys", f"{ident}.keys"))
    owned.file(name, keys / "Contents" / "MacOS" / f"{name} Keys", ctx.noise(600))
    owned._record(keys, name)
    ctx.write(system(f"/Library/Application Support/{ident}/updater"), ctx.noise(800))
    owned.plist(name, system("/Library/LaunchAgents/io.harbor.updater.plist"),
                _launch("io.harbor.updater", program=f"/Library/Application Support/{ident}/updater"))
    owned.folder(name, home(f"Library/Application Support/{name}"))
    owned.folder(name, home(f"Library/Group Containers/group.{ident}"))
    owned.folder(name, home(f"Library/Group Containers/HB7K2L9QX4.{ident}"))
    for path in (home(f"Library/Application Scripts/{ident}"),):
        owned.expect_embedded(name, owned.folder(name, path))
    for path in (home(f"Library/Cookies/{ident}.binarycookies"), home(f"Library/HTTPStorages/{ident}.binarycookies"),
                 home("Library/Application Support/com.apple.sharedfilelist/"
                      f"com.apple.LSSharedFileList.ApplicationRecentDocuments/{ident}.sfl2"),
                 home(f"Library/Logs/DiagnosticReports/{name}-2026-01-02-101010.ips"),
                 system(f"/Library/Logs/DiagnosticReports/{name}_2026-01-03-111111_host.crash")):
        owned.expect_embedded(name, owned.file(name, path, ctx.noise(300)))
    # Not its crash report: another program whose name only begins the same way.
    ctx.write(home(f"Library/Logs/DiagnosticReports/{name}Helper-2026-01-02-101010.ips"), b"x")


def _neighbours(ctx, owned):
    """Names that contain each other, and identifiers whose last word is generic."""
    apps = ctx.system("/Applications")
    home = ctx.user
    pairs = [
        ("Beacon Desktop", "com.beacon.desktop"),
        ("Fork", "io.forkworks.mac"),
        ("ForkLift", "com.liftco.ForkLift"),
        ("OBS", "com.obsproject.obs-studio"),
        ("Obsidian", "md.obsidian"),
        ("Studio", "com.studioworks.app"),
        ("LM Studio", "ai.lmstudio.lmstudio"),
    ]
    for name, ident in pairs:
        _bundle(ctx, apps, f"{name}.app", info(name, ident))
        owned.folder(name, home(f"Library/Application Support/{name}"))
        owned.folder(name, home(f"Library/Caches/{ident}"))
        owned.plist(name, home(f"Library/Preferences/{ident}.plist"), {"k": name})
        owned.folder(name, home(f"Library/Containers/{ident}"))
        owned.folder(name, home(f"Library/Saved Application State/{ident}.savedState"))
    owned.plist("OBS", home("Library/LaunchAgents/com.obsproject.obs-studio.virtualcam.plist"),
                _launch("com.obsproject.obs-studio.virtualcam", arguments=["/Applications/OBS.app/Contents/MacOS/obs", "--vc"]))


def _apple(ctx, owned):
    """Apple's apps under /System, which the sidebar does not list, and files of macOS itself."""
    for folder, name, ident in (("/System/Applications", "Safari", "com.apple.Safari"),
                                ("/System/Applications/Utilities", "Terminal", "com.apple.Terminal"),
                                ("/System/Library/CoreServices", "Finder", "com.apple.finder"),
                                ("/System/Applications", "Music", "com.apple.Music")):
        bundle = ctx.system(f"{folder}/{name}.app")
        ctx.plist(bundle / "Contents" / "Info.plist", info(name, ident))
        ctx.write(bundle / "Contents" / "MacOS" / name, ctx.noise(1_000))
        if name == "Safari":
            _embedded(ctx, bundle, "PlugIns/Safari Share.appex", "com.apple.Safari.SharingExtension", "Safari Share")
    home = ctx.user
    owned.folder(MACOS, home("Library/Caches/com.apple.helpd"))
    owned.folder(MACOS, home("Library/Application Support/Music"))
    owned.folder(MACOS, home("Library/Containers/com.apple.Safari.SharingExtension"))
    owned.folder(MACOS, home("Library/Group Containers/group.com.apple.desktop"))
    owned.folder(MACOS, home("Library/Application Support/com.apple.sharedfilelist"))


def _removed(ctx):
    """A backup tool removed without its launch items, and a sandboxed app with scripts and cookies."""
    home, system = ctx.user, ctx.system
    program = "/Applications/Vanished Backup.app/Contents/MacOS/backupd"
    ctx.plist(system("/Library/LaunchDaemons/com.vanishedbackup.daemon.plist"),
              _launch("com.vanishedbackup.daemon", arguments=[program, "--daemon"]))
    ctx.plist(home("Library/LaunchAgents/com.vanishedbackup.menu.plist"),
              _launch("com.vanishedbackup.menu", program="/Applications/Vanished Backup.app/Contents/MacOS/Vanished Backup"))
    orphans.EXPECTED["name:vanished backup"] = (
        orphans.HIGH, "Strong match across 2 locations: Launch Agents, Launch Daemons.", "Vanished Backup")

    ident = "com.vanished.scripted"
    ctx.write(home(f"Library/Containers/{ident}/Data/x"), ctx.noise(2_000))
    ctx.write(home(f"Library/Application Scripts/{ident}/run.scpt"), b"x")
    ctx.write(home(f"Library/Cookies/{ident}.binarycookies"), ctx.noise(200))
    ctx.plist(home(f"Library/Preferences/{ident}.plist"), {"CFBundleName": "Scripted"})
    orphans.EXPECTED[ident] = (orphans.HIGH, "Strong match across 4 locations: Containers, HTTP Storages, Preferences.",
                               "Scripted")
    # Scripts and cookies alone make no group.
    ctx.write(home("Library/Application Scripts/com.vanished.scriptsonly/run.scpt"), b"x")
    ctx.write(home("Library/Cookies/com.vanished.cookiesonly.binarycookies"), b"x")
    orphans.NEVER.extend(["com.vanished.scriptsonly", "com.vanished.cookiesonly",
                          # embedded identifiers of an installed app
                          "io.harbor.fetch", "io.harbor.quicklook", "io.harbor.desktop.share-extension", "io.harbor.vmnetd",
                          "com.apple.Safari.SharingExtension", "name:harbor desktop", "name:obs"])


def build(ctx):
    owned = _Owned(ctx)
    _harbor(ctx, owned)
    _neighbours(ctx, owned)
    _apple(ctx, owned)
    _removed(ctx)
    ctx.write(ctx.root / OWNERSHIP, json.dumps({"owners": owned.owners, "embedded": owned.embedded}, indent=1, sort_keys=True))
