# SPDX-License-Identifier: MIT
"""Installed apps in /Applications and ~/Applications, with every kind of information list."""
import unicodedata

from .context import App


def _bundle(ctx, folder, file_name, info, binary=False, payload=40_000, listed=True, shown_name=None, icon=None):
    """An .app bundle with an executable and resources; info None writes no Info.plist, bytes write
    that raw (malformed) text. icon: a colour draws a real AppIcon.icns and names it in the information
    list; "corrupt" names the filler file instead."""
    bundle = folder / file_name
    contents = bundle / "Contents"
    ctx.write(contents / "MacOS" / file_name[:-4], ctx.noise(payload))
    if isinstance(icon, tuple):
        ctx.icns(contents / "Resources" / "AppIcon.icns", icon)
    else:
        ctx.write(contents / "Resources" / "AppIcon.icns", ctx.noise(2_000))
    if icon is not None and isinstance(info, dict):
        info = dict(info, CFBundleIconFile="AppIcon")
    ctx.write(contents / "Resources" / ".DS_Store", ctx.noise(6_148))  # hidden: never counted
    ctx.write(contents / "PkgInfo", b"APPL????")
    if isinstance(info, bytes):
        ctx.write(contents / "Info.plist", info)
    elif info is not None:
        ctx.plist(contents / "Info.plist", info, binary=binary)
    identifier = info.get("CFBundleIdentifier") if isinstance(info, dict) else None
    if shown_name is None:
        shown_name = file_name[:-4]
        if isinstance(info, dict):
            for key in ("CFBundleName", "CFBundleDisplayName"):
                if isinstance(info.get(key), str):
                    shown_name = info[key]
                    break
    app = App(shown_name, identifier if isinstance(identifier, str) else None, bundle, listed)
    ctx.apps.append(app)
    return app


def _framework(ctx, contents, name):
    """A versioned framework with the usual symbolic links."""
    framework = contents / "Frameworks" / f"{name}.framework"
    ctx.write(framework / "Versions" / "A" / name, ctx.noise(30_000))
    ctx.write(framework / "Versions" / "A" / "Resources" / "Info.plist", b"<plist/>")
    ctx.symlink("A", framework / "Versions" / "Current")
    ctx.symlink(f"Versions/Current/{name}", framework / name)
    ctx.symlink("Versions/Current/Resources", framework / "Resources")


def info(name=None, identifier=None, display=None, version="1.0"):
    value = {"CFBundleShortVersionString": version, "CFBundlePackageType": "APPL"}
    if name is not None:
        value["CFBundleName"] = name
    if identifier is not None:
        value["CFBundleIdentifier"] = identifier
    if display is not None:
        value["CFBundleDisplayName"] = display
    return value


def build(ctx):
    apps_folder = ctx.folder(ctx.system("/Applications"))
    home_apps = ctx.folder(ctx.user("Applications"))

    _bundle(ctx, apps_folder, "Acme Notes.app", info("Acme Notes", "com.acme.notes"), payload=120_000,
            icon=(240, 190, 60))
    _bundle(ctx, apps_folder, "Brightline.app", info("Brightline", "io.brightline.Brightline"), binary=True,
            payload=250_000, icon=(250, 120, 60))
    _bundle(ctx, apps_folder, "Go.app", info("Go", "com.example.go"))
    _bundle(ctx, apps_folder, "Display Only.app", info(None, "org.sample.displayonly", display="Display Only Pro"))
    _bundle(ctx, apps_folder, "Numbered.app", info(42, "org.sample.numbered", display="Numbered Display"))
    _bundle(ctx, apps_folder, "Anon.app", info("Anon", None))
    _bundle(ctx, apps_folder, "NoInfo.app", None)
    _bundle(ctx, apps_folder, "Broken.app", b"<?xml version=\"1.0\"?><plist><dict><key>CFBundleName</key>")
    _bundle(ctx, apps_folder, "Café Über.app", info("Café Über", "de.cafe.ueber"), icon="corrupt")
    _bundle(ctx, apps_folder, "日本語エディタ.app", info("日本語エディタ", "jp.example.editor"))
    # An emoji takes two terminal columns; accents copied from an HFS+ volume arrive decomposed, so
    # the combining marks take none.
    _bundle(ctx, apps_folder, "Pomodoro 🍅.app", info("Pomodoro 🍅", "com.tomatoworks.pomodoro"))
    resume = unicodedata.normalize("NFD", "Résumé Builder")
    _bundle(ctx, apps_folder, f"{resume}.app", info(resume, "com.example.resumebuilder"))
    # One name twice: the release, and the beta the user keeps beside it in ~/Applications.
    _bundle(ctx, apps_folder, "Pixel Ruler.app", info("Pixel Ruler", "com.pixelruler.PixelRuler"))
    zeta = _bundle(ctx, apps_folder, "Zeta Tools.app", info("Zeta Tools", "com.zeta.tools"), payload=80_000,
                  icon=(130, 90, 220))
    contents = zeta.path / "Contents"
    _framework(ctx, contents, "ZetaKit")
    ctx.write(contents / "Library" / "LoginItems" / "Zeta Helper.app" / "Contents" / "MacOS" / "Zeta Helper",
              ctx.noise(50_000))
    ctx.plist(contents / "Library" / "LoginItems" / "Zeta Helper.app" / "Contents" / "Info.plist",
              info("Zeta Helper", "com.zeta.tools.helper"))

    # Things discovery must pass over or treat specially.
    ctx.write(apps_folder / "X.app", b"not a bundle")
    ctx.apps.append(App("X", None, apps_folder / "X.app"))
    _bundle(ctx, apps_folder, "Shouting.APP", info("Shouting", "com.sample.shouting"), listed=False)
    _bundle(ctx, apps_folder / "Utilities", "Terminal Tool.app", info("Terminal Tool", "com.sample.terminal"),
            listed=False)
    _bundle(ctx, apps_folder, ".Hidden.app", info("Hidden", "com.sample.hidden"), listed=False)

    _bundle(ctx, home_apps, "Home Tool.app", info("Home Tool", "net.hometool.app"), icon=(60, 170, 90))
    _bundle(ctx, home_apps, "notes.app", info("notes", "org.lowercase.notes"))
    _bundle(ctx, home_apps, "Pixel Ruler Beta.app", info("Pixel Ruler", "com.pixelruler.PixelRuler.beta", version="2.0b3"))

    if ctx.large:
        for index in range(500):
            name = f"Bulk App {index:03d}"
            _bundle(ctx, apps_folder if index % 5 else home_apps, f"{name}.app",
                    info(name, f"com.bulk{index % 37}.app{index:03d}"), binary=index % 2 == 0,
                    payload=ctx.rng.randrange(10_000, 400_000))
