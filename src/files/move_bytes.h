// The bytes of one open file into another, by the cheapest way that the system offers. Copies go
// through here.
#pragma once

enum class move_result { done, read_failed, write_failed };

// Copies all of `from`, of which nothing was read yet, into `to`, which is empty. Where the file
// system can, both share their blocks; else the system copies, and what it does not copy is read
// and written. On failure errno says why and `to` holds what was copied until then.
move_result move_bytes(int from, int to);
