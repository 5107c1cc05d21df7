// SPDX-License-Identifier: GPL-3.0-or-later
// Holds nothing: the target it belongs to is there for its precompiled header.
