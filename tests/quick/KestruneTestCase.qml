// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

// What the view tests share: a view or the whole window on a fresh state object of the sample Mac, a
// scan, and the items a view shows. Options are QuickHarness::newViewModel's.
TestCase {
    id: testCase
    // The views below are made under the test case itself, which Qt hides by default.
    visible: true
    when: windowShown

    Component { id: windowComponent; Main {} }

    function cleanup() { harness.trashMoves = false }

    // Made under this test's window, with the sample's apps listed unless `listed` is false.
    function makeView(component, options, listed) {
        const view = createTemporaryObject(component, testCase, {viewModel: harness.newViewModel(options || {})})
        if (listed !== false) {
            view.viewModel.loadApps()
            tryVerify(() => !view.viewModel.isLoadingApps && view.viewModel.apps.count > 0, 10000)
        }
        return view
    }

    // The window loads its apps itself; it is made active, as keys reach only the active window.
    function openWindow(options) {
        const window = createTemporaryObject(windowComponent, null, {viewModel: harness.newViewModel(options || {})})
        tryVerify(() => !window.viewModel.isLoadingApps && window.viewModel.apps.count > 0, 10000)
        window.requestActivate()
        tryVerify(() => window.active)
        return window
    }

    // Selects a sample app by its bundle's name and scans it; `view` is a view or the window.
    function scan(view, bundle) {
        const model = view.viewModel
        model.selectAppById(harness.applicationPath(bundle))
        verify(model.selectedApp.valid, bundle)
        model.scanSelectedApp()
        tryVerify(() => !model.isScanning && model.scanResult.valid, 20000)
        waitForRendering(view.contentItem || view)
    }

    // The shown items below `item`, itself included, that pass `test`.
    function collect(item, test, found) {
        found = found || []
        if (item.visible && test(item))
            found.push(item)
        for (let i = 0; i < item.children.length; ++i)
            collect(item.children[i], test, found)
        return found
    }
    function named(item, name) { return collect(item, (child) => child.objectName === name) }
}
