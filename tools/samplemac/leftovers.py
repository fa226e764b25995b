# SPDX-License-Identifier: MIT
"""(to be written)"""


def build(ctx):
    pass
