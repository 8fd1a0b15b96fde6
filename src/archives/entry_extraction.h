#ifndef TEMVAR_ARCHIVES_ENTRY_EXTRACTION_H_
#define TEMVAR_ARCHIVES_ENTRY_EXTRACTION_H_

#include "temvar/binary_data.h"

namespace temvar {

// TMVUtilityUnzip::ExtractEntry.
bool ExtractEntryToMemory(BinaryDataResult* result, const char* archive, const char* entry);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ENTRY_EXTRACTION_H_
