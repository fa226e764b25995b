// SPDX-License-Identifier: MIT
import QtQuick
import QtTest
import Kestrune

Item {
    id: root
    width: 300; height: 100

    Component { id: badgeComponent; ConfidenceBadge {} }

    TestCase {
        name: "ConfidenceBadge"
        when: windowShown

        function test_eachGradeHasItsColours_data() {
            return [{tag: "high", confidence: "Likely removed app", text: AppTheme.green, fill: AppTheme.green, opacity: 0.18},
                    {tag: "medium", confidence: "Possible leftover", text: AppTheme.orange, fill: AppTheme.orange, opacity: 0.18},
                    {tag: "uncertain", confidence: "Uncertain match", text: AppTheme.secondary, fill: AppTheme.gray, opacity: 0.16}]
        }
        function test_eachGradeHasItsColours(data) {
            const badge = createTemporaryObject(badgeComponent, root, {confidence: data.confidence})
            const label = badge.children[0]
            compare(label.text, data.confidence)
            for (const channel of ["r", "g", "b", "a"])
                fuzzyCompare(label.color[channel], data.text[channel], 0.01)
            for (const channel of ["r", "g", "b"])
                fuzzyCompare(badge.color[channel], data.fill[channel], 0.01)
            fuzzyCompare(badge.color.a, data.opacity, 0.01)
            compare(badge.radius, badge.height / 2)
        }
    }
}
