// Reading and setting the floating-point control and status: the x87 control and status
// words and the SSE control register (MXCSR). Nothing in the library calls these and no
// primitive depends on them; they are here for hosts that want the state around a call.
//
// None of them can fault, whatever the argument: bits the processor reserves are never
// loaded, and the x87 exception flags are cleared before a control word is loaded, since a
// set flag that the new word unmasks would otherwise fault at the next x87 instruction.
// On processors without these units every getter answers 0 and every setter does nothing.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// ---- x87 ----------------------------------------------------------------------------
// Control word bits 5..0 mask the exceptions, 9..8 choose the precision, 11..10 the rounding.
void ps_set_cw_fpu(unsigned int controlWord);
unsigned int ps_get_cw_fpu(void);
unsigned int ps_get_sw_fpu(void);
// Clears the exception flags of the status word.
void ps_clear_fpu(void);
// Sets the control bits selected by mask to those of controlWord; returns the new word.
// A mask of 0 only reads.
unsigned int ipp_control87(unsigned int controlWord, unsigned int mask);
unsigned int ipp_status87(void);
// Returns the status word as it was and clears its exception flags.
unsigned int ipp_clear87(void);
// Rounding (0 nearest, 1 down, 2 up, 3 toward zero) and precision (0 single, 2 double,
// 3 extended); returns the control word as it was.
unsigned int ipp_set_rcpc_fpu(unsigned int rounding, unsigned int precision);
// Loads controlWord; returns the control word as it was.
unsigned int ipp_set_cw_fpu(unsigned int controlWord);

// ---- SSE ----------------------------------------------------------------------------
// MXCSR bits 5..0 are the exception flags, 6 denormals-are-zero, 12..7 the masks, 14..13
// the rounding, 15 flush-to-zero.
void ps_set_ssx(unsigned int mxcsr);
unsigned int ps_get_ssx(void);
// Clears the six exception flags.
void ipp_clear_ssx(void);
// Rounding as for ipp_set_rcpc_fpu; returns MXCSR as it was.
unsigned int ipp_set_rc_ssx(unsigned int rounding);
// Sets the MXCSR bits selected by mask to those of mxcsr; returns MXCSR as it was.
unsigned int ipp_set_cw_ssx(unsigned int mxcsr, unsigned int mask);
// 1 if the processor accepts the denormals-are-zero bit.
int ipp_tst_daz_ssx(void);

// ---- classification -----------------------------------------------------------------
// Judged by the bits, so that no comparison raises a flag.
int ipp_isnan(double value);
int ipp_finite(double value);

#ifdef __cplusplus
}
#endif
