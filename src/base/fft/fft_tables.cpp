// The quarter-wave sine table that serves every transform up to 1024
// points; a length of 2^order points reads it with the stride
// 2^(10 - order).
#include "base/fft/fft.h"
#include "base/fft/fft_fix_table.h"

extern "C" const qel32f fft_fix_twiddle_table_32f[257] = {QELS_FFT_FIX_SINE_1024};
