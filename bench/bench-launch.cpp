// SPDX-License-Identifier: GPL-3.0-or-later
// The program as it is, ended as soon as its pod table has rows. bench.sh compares its running time with that of the
// bare kubectl runs that it must make.
