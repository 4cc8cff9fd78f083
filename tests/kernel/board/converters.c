// SPDX-License-Identifier: GPL-2.0
/*
 * The optical converter, chip select 1 of SPI bus 32765: a command starts a conversion, 150 ms later
 * its result word can be read, before that the command comes back. And the board's own converter,
 * twelve inputs of the industrial-I/O system.
 */
#include "board.h"

#include <linux/iio/iio.h>
#include <linux/module.h>

#define BUS 32765
#define CONVERSION_NS (150 * NSEC_PER_MSEC)
#define INPUTS 12

static int inputs[INPUTS];
module_param_array(inputs, int, NULL, 0);
MODULE_PARM_DESC(inputs, "raw counts at the board's own inputs");

static struct spi_controller *bus;
static u32 command;
static u64 started_at;
static u8 shift[4];
static unsigned int shifted;
static struct iio_dev *adc;

static u32 next_word(void)
{
	s32 reading;

	if (!started_at || ktime_get_ns() - started_at < CONVERSION_NS)
		return command;
	reading = instrument_reading();
	return ((reading < 0 ? 0 : BIT(24)) | (reading & 0xFFFFFF)) << 5;
}

static u8 next_byte(void)
{
	u32 word;

	if (shifted % 4 == 0) {
		word = next_word();
		shift[0] = word >> 24;
		shift[1] = word >> 16;
		shift[2] = word >> 8;
		shift[3] = word;
	}
	return shift[shifted++ % 4];
}

/* Words of 16 bits lie in memory as the processor has them, and go out most significant byte first. */
static int transfer_one(struct spi_controller *controller, struct spi_device *device,
			struct spi_transfer *transfer)
{
	unsigned int swap = transfer->bits_per_word > 8 ? 1 : 0;
	const u8 *out = transfer->tx_buf;
	u8 sent[4] = { 0 };
	u8 *in = transfer->rx_buf;
	unsigned int i;

	for (i = 0; out && i < min(transfer->len, 4u); ++i)
		sent[i] = out[i ^ swap];
	for (i = 0; in && i < transfer->len; ++i)
		in[i ^ swap] = next_byte();
	if (out) {
		command = sent[0] << 24 | sent[1] << 16 | sent[2] << 8 | sent[3];
		started_at = ktime_get_ns();
		shifted = 0;
	}
	return 0;
}

static int start_bus(struct device *parent)
{
	struct spi_device *device;
	int error;

	bus = spi_alloc_master(parent, 0);
	if (!bus)
		return -ENOMEM;
	bus->bus_num = BUS;
	bus->num_chipselect = 2;
	bus->mode_bits = SPI_MODE_X_MASK | SPI_CS_HIGH;
	bus->bits_per_word_mask = SPI_BPW_MASK(8) | SPI_BPW_MASK(16);
	bus->transfer_one = transfer_one;
	error = spi_register_controller(bus);
	if (error)
		return error;
	device = spi_alloc_device(bus);
	if (!device)
		return -ENOMEM;
	device->chip_select = 1;
	device->max_speed_hz = 1000000;
	strscpy(device->modalias, "spidev", sizeof(device->modalias));
	device->driver_override = kstrdup("spidev", GFP_KERNEL);
	return spi_add_device(device);
}

static int read_raw(struct iio_dev *device, struct iio_chan_spec const *channel, int *value, int *micro,
		    long what)
{
	if (what == IIO_CHAN_INFO_RAW) {
		*value = inputs[channel->channel];
		return IIO_VAL_INT;
	}
	*value = 0;
	*micro = 100;
	return IIO_VAL_INT_PLUS_MICRO;
}

static const struct iio_info info = { .read_raw = read_raw };
static struct iio_chan_spec channels[INPUTS];

int converters_start(struct device *parent)
{
	unsigned int i;
	int error;

	for (i = 0; i < INPUTS; ++i)
		channels[i] = (struct iio_chan_spec){
			.type = IIO_VOLTAGE,
			.indexed = 1,
			.channel = i,
			.scan_index = -1,
			.info_mask_separate = BIT(IIO_CHAN_INFO_RAW),
			.info_mask_shared_by_type = BIT(IIO_CHAN_INFO_SCALE),
		};
	adc = iio_device_alloc(parent, 0);
	if (!adc)
		return -ENOMEM;
	adc->name = "tavrelin-inputs";
	adc->info = &info;
	adc->channels = channels;
	adc->num_channels = INPUTS;
	error = iio_device_register(adc);
	return error ? error : start_bus(parent);
}
