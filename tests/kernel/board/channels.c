// SPDX-License-Identifier: GPL-2.0
/* Four PWM channels; what they do is up to the instrument behind them. */
#include "board.h"

#include <linux/module.h>

static struct pwm_state outputs[CHANNELS];

static int apply(struct pwm_chip *chip, struct pwm_device *pwm, const struct pwm_state *state)
{
	outputs[pwm->hwpwm] = *state;
	instrument_outputs_changed();
	return 0;
}

static const struct pwm_ops ops = { .apply = apply, .owner = THIS_MODULE };

static struct pwm_chip chip = { .ops = &ops, .npwm = CHANNELS };

int channels_start(struct device *parent)
{
	chip.dev = parent;
	return pwmchip_add(&chip);
}

void channel_output(unsigned int channel, u64 *period, u64 *duty)
{
	const struct pwm_state *state = &outputs[channel];
	bool pulsing = state->enabled && state->duty_cycle;

	*period = pulsing ? state->period : 0;
	*duty = pulsing ? state->duty_cycle : 0;
}

void channels_tell(struct seq_file *out)
{
	unsigned int i;

	for (i = 0; i < CHANNELS; ++i)
		seq_printf(out, "channel %u %s %s period %llu duty %llu\n", i,
			   test_bit(PWMF_EXPORTED, &chip.pwms[i].flags) ? "exported" : "free",
			   outputs[i].enabled ? "on" : "off", outputs[i].period, outputs[i].duty_cycle);
}
