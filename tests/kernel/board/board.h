/* SPDX-License-Identifier: GPL-2.0 */
/* The instrument's board for a Linux kernel under emulation: what is wired to what. */
#ifndef TAVRELIN_BOARD_H
#define TAVRELIN_BOARD_H

#include <linux/gpio/driver.h>
#include <linux/pwm.h>
#include <linux/seq_file.h>
#include <linux/spi/spi.h>

#define LINE(port, bit) ((port)*32 + (bit))
#define PUMP_ENABLE LINE(0, 2)	   /* low: the driver chip is enabled */
#define STIRRER_ENABLE LINE(1, 15) /* low: the driver chip is enabled */
#define HOME_SENSOR LINE(1, 18)	   /* low: the flag is in the sensor */
#define LINES 128

enum { LAMP, PUMP, STIRRER, VALVE, CHANNELS };

/* lines.c: the parallel-I/O controller, by the kernel's interface and by its registers. */
int lines_start(struct device *parent);
void lines_tell(struct seq_file *out);
/* Carries out what was stored to the register page since the last call. */
void lines_take_registers(void);
/* True while the line is an output that is low: what enables a driver chip. */
bool line_pulls_low(unsigned int line);
/* Sets the level that the outside puts on a line and raises the edge that is watched. */
void line_set_input(unsigned int line, bool level);

/* channels.c: the PWM controller. */
int channels_start(struct device *parent);
void channels_tell(struct seq_file *out);
/* Nanoseconds of a channel's period and of its pulse; both 0 while it is off. */
void channel_output(unsigned int channel, u64 *period, u64 *duty);

/* converters.c: the optical converter on the SPI bus and the board's own inputs. */
int converters_start(struct device *parent);

/* instrument.c: pump, valve, stirrer, lamp, cell and detector. */
void instrument_start(void);
void instrument_tell(struct seq_file *out);
/* Called after an output line or a channel may have changed. */
void instrument_outputs_changed(void);
/* What the detector reads at this moment, in counts. */
s32 instrument_reading(void);

#endif
