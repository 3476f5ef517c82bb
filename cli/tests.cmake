# SPDX-License-Identifier: BSD-3-Clause
# Tests of ipmibctl's parts; the program as its users meet it is tested in tests/cli.

ipmib_test(cli_test SOURCES changes_test.cpp near_names_test.cpp rates_test.cpp text_table_test.cpp text_test.cpp
           LIBS ipmib_cli)
