#ifndef TEMVAR_UTILITIES_STRING_NUMBERS_H_
#define TEMVAR_UTILITIES_STRING_NUMBERS_H_

#include <cstdint>

namespace temvar {

// atoi with a result for every text: blanks, a sign, decimal digits; 0 without digits. A number out
// of range gives the nearest one in range, as atoi of the Windows runtime does.
int32_t ParseInt32(const char* text);

}  // namespace temvar

#endif  // TEMVAR_UTILITIES_STRING_NUMBERS_H_
