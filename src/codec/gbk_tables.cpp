// SPDX-License-Identifier: MIT
#include <iterator>

#include <gwq/codec/encodings.h>

const unsigned short gbk_first_code = 0x8140;
const unsigned short gbk_last_code = 0xFE9F;
const unsigned short unicode_buf_size = std::size(unicodeTables);
const unsigned short unicodeTables[] = {
#include "codec/unicode_tables.inc"
};

const unsigned short unicode_first_code = 0x4E00;
const unsigned short unicode_last_code = 0x9FA5;
const unsigned short gbk_buf_size = std::size(gbkTables);
const unsigned short gbkTables[] = {
#include "codec/gbk_tables.inc"
};
