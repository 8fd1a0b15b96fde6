// The wide standard error stream, for narrow text.
#ifndef TEMVAR_PLATFORM_WIDE_ERRORS_H_
#define TEMVAR_PLATFORM_WIDE_ERRORS_H_

namespace temvar {

// Writes the UTF-8 text and an end of line to the wide standard error stream. Characters that the
// stream's locale can't show come out as "?" where the stream can't carry them; neither they nor
// the call itself spoil the stream, or the narrow one beside it, for later output.
void WriteWideErrorLine(const char* utf8);

}  // namespace temvar

#endif  // TEMVAR_PLATFORM_WIDE_ERRORS_H_
