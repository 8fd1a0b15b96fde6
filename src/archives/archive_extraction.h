#ifndef TEMVAR_ARCHIVES_ARCHIVE_EXTRACTION_H_
#define TEMVAR_ARCHIVES_ARCHIVE_EXTRACTION_H_

namespace temvar {

// TMVUtilityUnzip::ExtractArchive.
bool ExtractArchiveTo(const char* archive, const char* destination);

}  // namespace temvar

#endif  // TEMVAR_ARCHIVES_ARCHIVE_EXTRACTION_H_
