// SPDX-License-Identifier: GPL-2.0
/*
 * What the board moves and measures, with the figures of the simulated board: the pump's shaft turns
 * one of 1600 steps per pulse and a flag 67 steps wide passes the home sensor; opening the valve
 * flushes the cell; reagent and stirring make the colour, in 1.5 s and in whole numbers.
 */
#include "board.h"

#include <linux/hrtimer.h>
#include <linux/math64.h>
#include <linux/module.h>
#include <linux/platform_device.h>
#include <linux/proc_fs.h>

#define STEPS_PER_TURN 1600
#define FLAG_FIRST 1200
#define FLAG_STEPS 67
#define FULL_DOSE_STEPS 1400
#define DEVELOPMENT_NS (1500 * (s64)NSEC_PER_MSEC)
#define VALVE_RELEASE_NS (20 * (s64)NSEC_PER_MSEC) /* a shorter pause is no closing */
#define NEVER S64_MAX
#define SAMPLES 16

static int dark = 20000;
module_param(dark, int, 0);
MODULE_PARM_DESC(dark, "counts without light");
static int reference = 3000000;
module_param(reference, int, 0);
MODULE_PARM_DESC(reference, "counts with light through a clear sample");
static int samples[SAMPLES] = { 1500000 };
static int sample_count = 1;
module_param_array(samples, int, &sample_count, 0600);
MODULE_PARM_DESC(samples, "counts of each measurement's sample, fully coloured; the last one stays");

static DEFINE_RAW_SPINLOCK(lock);
static struct platform_device *device;
static struct hrtimer flag_timer;
static s64 position, since; /* of the shaft: steps, and when it stood there */
static u64 pulse_period;    /* 0: it stands */
static bool valve_open, stirring;
static s64 closed_at = -2 * VALVE_RELEASE_NS;
static unsigned int flushes;
static s64 clean_at_step;
static s64 developing_since = NEVER;

static s64 steps_turned(s64 now)
{
	return pulse_period ? position + div64_u64(now - since, pulse_period) : position;
}

static u32 step_in_turn(s64 now)
{
	u32 step;

	div_u64_rem(steps_turned(now), STEPS_PER_TURN, &step);
	return step;
}

/* Steps until the sensor's view changes next. */
static u32 steps_to_edge(u32 step)
{
	if (step < FLAG_FIRST)
		return FLAG_FIRST - step;
	if (step < FLAG_FIRST + FLAG_STEPS)
		return FLAG_FIRST + FLAG_STEPS - step;
	return STEPS_PER_TURN + FLAG_FIRST - step;
}

/* Under the lock. */
static void await_edge(s64 now)
{
	s64 edge = steps_turned(now) + steps_to_edge(step_in_turn(now));

	if (pulse_period)
		hrtimer_start(&flag_timer, ns_to_ktime(since + (edge - position) * pulse_period),
			      HRTIMER_MODE_ABS_HARD);
	else
		hrtimer_try_to_cancel(&flag_timer);
}

static enum hrtimer_restart flag_moved(struct hrtimer *timer)
{
	unsigned long flags;
	u32 step;

	raw_spin_lock_irqsave(&lock, flags);
	step = step_in_turn(ktime_get_ns());
	await_edge(ktime_get_ns());
	raw_spin_unlock_irqrestore(&lock, flags);
	line_set_input(HOME_SENSOR, step < FLAG_FIRST || step >= FLAG_FIRST + FLAG_STEPS);
	return HRTIMER_NORESTART;
}

static bool pulsing(unsigned int channel)
{
	u64 period, duty;

	channel_output(channel, &period, &duty);
	return period != 0;
}

static void turn_shaft(s64 now)
{
	u64 period, duty;

	channel_output(PUMP, &period, &duty);
	if (!line_pulls_low(PUMP_ENABLE))
		period = 0;
	if (period == pulse_period)
		return;
	position = steps_turned(now);
	since = now;
	pulse_period = period;
	await_edge(now);
}

static void work_valve(s64 now, bool open)
{
	if (open == valve_open)
		return;
	valve_open = open;
	if (!open) {
		closed_at = now;
	} else if (now - closed_at > VALVE_RELEASE_NS) {
		++flushes;
		developing_since = NEVER;
	}
}

static void stir(s64 now, bool on)
{
	if (on && !stirring && developing_since == NEVER && steps_turned(now) > clean_at_step)
		developing_since = now;
	stirring = on;
}

void instrument_outputs_changed(void)
{
	unsigned long flags;
	s64 now;

	raw_spin_lock_irqsave(&lock, flags);
	now = ktime_get_ns();
	if (valve_open)
		clean_at_step = steps_turned(now);
	turn_shaft(now);
	work_valve(now, pulsing(VALVE));
	stir(now, pulsing(STIRRER) && line_pulls_low(STIRRER_ENABLE));
	raw_spin_unlock_irqrestore(&lock, flags);
}

/* Counts through the cell under full light: from the reference to the sample as colour develops. */
static s64 cell_counts(s64 now)
{
	unsigned int measurement = flushes < 2 ? 0 : flushes - 2;
	s64 sample = samples[min_t(unsigned int, measurement, sample_count - 1)];
	s64 dose, colour;

	if (developing_since == NEVER)
		return reference;
	dose = min_t(s64, FULL_DOSE_STEPS, steps_turned(now) - clean_at_step);
	colour = min_t(s64, DEVELOPMENT_NS, now - developing_since);
	return reference + div64_s64((sample - reference) * dose * div_s64(colour, NSEC_PER_USEC),
				     FULL_DOSE_STEPS * div_s64(DEVELOPMENT_NS, NSEC_PER_USEC));
}

s32 instrument_reading(void)
{
	unsigned long flags;
	u64 period, duty;
	s64 counts = dark;

	raw_spin_lock_irqsave(&lock, flags);
	channel_output(LAMP, &period, &duty);
	if (period) /* the reference is read at a duty of 3 in 10 */
		counts += div64_s64((cell_counts(ktime_get_ns()) - dark) * (s64)duty * 10,
				    (s64)period * 3);
	raw_spin_unlock_irqrestore(&lock, flags);
	return counts;
}

void instrument_tell(struct seq_file *out)
{
	seq_printf(out, "pump %s, valve %s, stirrer %s, %u samples flushed in\n",
		   pulse_period ? "turning" : "standing", valve_open ? "open" : "closed",
		   stirring ? "on" : "off", flushes);
}

void instrument_start(void)
{
	hrtimer_init(&flag_timer, CLOCK_MONOTONIC, HRTIMER_MODE_ABS_HARD);
	flag_timer.function = flag_moved;
	line_set_input(HOME_SENSOR, true);
}

/* /proc/tavrelin-board: the board as it stands; "50 0" written to it puts a level on line 50. */
static int tell(struct seq_file *out, void *unused)
{
	lines_take_registers();
	lines_tell(out);
	channels_tell(out);
	instrument_tell(out);
	return 0;
}

static int tell_open(struct inode *inode, struct file *file)
{
	return single_open(file, tell, NULL);
}

static ssize_t take_level(struct file *file, const char __user *text, size_t size, loff_t *at)
{
	char word[16] = { 0 };
	unsigned int line, level;

	if (size >= sizeof(word) || copy_from_user(word, text, size))
		return -EINVAL;
	if (sscanf(word, "%u %u", &line, &level) != 2 || line >= LINES)
		return -EINVAL;
	line_set_input(line, level);
	return size;
}

static const struct proc_ops proc_ops = {
	.proc_open = tell_open,
	.proc_read = seq_read,
	.proc_lseek = seq_lseek,
	.proc_release = single_release,
	.proc_write = take_level,
};

static int __init board_init(void)
{
	int error;

	device = platform_device_register_simple("tavrelin-board", -1, NULL, 0);
	if (IS_ERR(device))
		return PTR_ERR(device);
	error = lines_start(&device->dev);
	if (!error)
		error = channels_start(&device->dev);
	if (!error)
		error = converters_start(&device->dev);
	if (error)
		panic("no board: %d", error); /* the guest has no other use, and nothing is taken down */
	instrument_start();
	proc_create("tavrelin-board", 0600, NULL, &proc_ops);
	return 0;
}
module_init(board_init); /* and no exit: the board stays */

MODULE_LICENSE("GPL");
MODULE_DESCRIPTION("The board of a water analyser, for runs on an emulated kernel");
