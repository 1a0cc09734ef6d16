# SPDX-License-Identifier: MIT
"""Fails for an exported function that no fuzzer calls: check_names.py EXPORTS SOURCE...."""

import pathlib
import re
import sys

# Data, what is called by every session as it is, and what takes a format of the compiler's.
ELSEWHERE = set(
    "dllversion g_AuxOp g_CancelWrite m_devsSdt m_szBuf m_szCMD gbkTables gbk_buf_size gbk_first_code gbk_last_code "
    "unicodeTables unicode_buf_size unicode_first_code unicode_last_code ANSIToUTF8 ICC_DPrintLogToFile min".split())


def main() -> None:
    exports = set(re.findall(r"^\w+", pathlib.Path(sys.argv[1]).read_text(), re.MULTILINE))
    sources = " ".join(pathlib.Path(path).read_text() for path in sys.argv[2:])
    missing = sorted(exports - ELSEWHERE - set(re.findall(r"\w+", sources)))
    missing = [name for name in missing if not name.startswith("cJSON_")]  # Debian's own
    sys.exit(f"no fuzzer calls {', '.join(missing)}" if missing else 0)


main()
