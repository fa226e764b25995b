# SPDX-License-Identifier: MIT
"""Parts of the sample-Mac generator, one module per subject, each with build(ctx)."""
