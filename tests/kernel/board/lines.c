// SPDX-License-Identifier: GPL-2.0
/*
 * 128 lines pioA0 to pioD31, kernel numbers port * 32 + bit, each with an interrupt for its edges.
 * The register page at 0xFFFFF000 is plain memory that no driver claims, so that /dev/mem may map it:
 * levels are shown there after every change, and stores take effect when somebody next looks at a line.
 */
#include "board.h"

#include <linux/io.h>
#include <linux/irq.h>
#include <linux/irqdomain.h>
#include <linux/module.h>

#define PAGE_ADDRESS 0xFFFFF000
#define PORT_REGISTERS(port) (0x400 + (port)*0x200)
#define SET_OUTPUT 0x30
#define CLEAR_OUTPUT 0x34
#define PIN_STATUS 0x3C

static DEFINE_RAW_SPINLOCK(lock);
static u32 outputs[LINES / 32];
static u32 levels[LINES / 32]; /* at the pins: driven by outputs, by the outside else */
static u32 driven[LINES / 32];
static u32 outside[LINES / 32];
static void __iomem *page;
static unsigned int edges_wanted[LINES];
static u32 listening[LINES / 32];
static char names[LINES][8];
static const char *name_pointers[LINES];
static struct gpio_chip chip;

static bool bit_of(const u32 *words, unsigned int line)
{
	return words[line / 32] >> (line % 32) & 1;
}

static void set_bit_of(u32 *words, unsigned int line, bool value)
{
	words[line / 32] = (words[line / 32] & ~BIT(line % 32)) | (u32)value << (line % 32);
}

/* Under the lock. */
static void settle(void)
{
	unsigned int port;

	for (port = 0; port < LINES / 32; ++port) {
		levels[port] = (driven[port] & outputs[port]) | (outside[port] & ~outputs[port]);
		writel(levels[port], page + PORT_REGISTERS(port) + PIN_STATUS);
	}
}

static u32 take(unsigned int port, unsigned int reg)
{
	void __iomem *address = page + PORT_REGISTERS(port) + reg;
	u32 bits = readl(address);

	writel(0, address);
	return bits;
}

void lines_take_registers(void)
{
	unsigned long flags;
	unsigned int port;
	u32 any = 0;

	raw_spin_lock_irqsave(&lock, flags);
	for (port = 0; port < LINES / 32; ++port) {
		u32 high = take(port, SET_OUTPUT);
		u32 low = take(port, CLEAR_OUTPUT);

		driven[port] = (driven[port] | high) & ~low;
		any |= high | low;
	}
	settle();
	raw_spin_unlock_irqrestore(&lock, flags);
	if (any)
		instrument_outputs_changed();
}

bool line_pulls_low(unsigned int line)
{
	return bit_of(outputs, line) && !bit_of(driven, line);
}

void line_set_input(unsigned int line, bool level)
{
	unsigned int edge = level ? IRQ_TYPE_EDGE_RISING : IRQ_TYPE_EDGE_FALLING;
	unsigned long flags;
	bool heard;

	raw_spin_lock_irqsave(&lock, flags);
	heard = bit_of(levels, line) != level && !bit_of(outputs, line) && bit_of(listening, line) &&
		(edges_wanted[line] & edge);
	set_bit_of(outside, line, level);
	settle();
	raw_spin_unlock_irqrestore(&lock, flags);
	if (heard)
		generic_handle_irq_safe(irq_find_mapping(chip.irq.domain, line));
}

static void change(unsigned int line, bool output, bool level)
{
	unsigned long flags;

	raw_spin_lock_irqsave(&lock, flags);
	set_bit_of(outputs, line, output);
	if (output)
		set_bit_of(driven, line, level);
	settle();
	raw_spin_unlock_irqrestore(&lock, flags);
	instrument_outputs_changed();
}

static int get_direction(struct gpio_chip *gc, unsigned int line)
{
	return bit_of(outputs, line) ? GPIO_LINE_DIRECTION_OUT : GPIO_LINE_DIRECTION_IN;
}

static int direction_input(struct gpio_chip *gc, unsigned int line)
{
	change(line, false, false);
	return 0;
}

static int direction_output(struct gpio_chip *gc, unsigned int line, int level)
{
	change(line, true, level);
	return 0;
}

static int get(struct gpio_chip *gc, unsigned int line)
{
	lines_take_registers();
	return bit_of(levels, line);
}

static void set(struct gpio_chip *gc, unsigned int line, int level)
{
	change(line, bit_of(outputs, line), level);
}

static void irq_mask(struct irq_data *data)
{
	set_bit_of(listening, irqd_to_hwirq(data), false);
	gpiochip_disable_irq(&chip, irqd_to_hwirq(data));
}

static void irq_unmask(struct irq_data *data)
{
	gpiochip_enable_irq(&chip, irqd_to_hwirq(data));
	set_bit_of(listening, irqd_to_hwirq(data), true);
}

static int irq_set_type(struct irq_data *data, unsigned int type)
{
	if (type & ~IRQ_TYPE_EDGE_BOTH)
		return -EINVAL;
	edges_wanted[irqd_to_hwirq(data)] = type;
	return 0;
}

static const struct irq_chip edges = {
	.name = "tavrelin-edges",
	.irq_mask = irq_mask,
	.irq_unmask = irq_unmask,
	.irq_set_type = irq_set_type,
	.flags = IRQCHIP_IMMUTABLE,
	GPIOCHIP_IRQ_RESOURCE_HELPERS,
};

static struct gpio_chip chip = {
	.label = "tavrelin-lines",
	.owner = THIS_MODULE,
	.base = 0,
	.ngpio = LINES,
	.names = name_pointers,
	.get_direction = get_direction,
	.direction_input = direction_input,
	.direction_output = direction_output,
	.get = get,
	.set = set,
};

int lines_start(struct device *parent)
{
	unsigned int line;

	page = ioremap(PAGE_ADDRESS, PAGE_SIZE);
	if (!page)
		return -ENOMEM;
	memset_io(page, 0, PAGE_SIZE);
	for (line = 0; line < LINES; ++line) {
		snprintf(names[line], sizeof(names[line]), "pio%c%u", 'A' + line / 32, line % 32);
		name_pointers[line] = names[line];
	}
	chip.parent = parent;
	gpio_irq_chip_set_chip(&chip.irq, &edges);
	chip.irq.handler = handle_simple_irq;
	chip.irq.default_type = IRQ_TYPE_NONE;
	return gpiochip_add_data(&chip, NULL);
}

void lines_tell(struct seq_file *out)
{
	unsigned int line;

	for (line = 0; line < LINES; ++line)
		if (gpiochip_is_requested(&chip, line) || bit_of(outputs, line))
			seq_printf(out, "line %s %s %s %u\n", names[line] + 3,
				   gpiochip_is_requested(&chip, line) ? "exported" : "free",
				   bit_of(outputs, line) ? "out" : "in", bit_of(levels, line));
}
