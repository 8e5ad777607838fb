/* Uses an I2C bus with a port expander at 0x21 as programs use i2c-dev. Says which call did not do
 * its work on standard error.
 *
 *     i2c_calls DEVICE [DESCRIPTOR]
 *
 * The expander's output registers are 12 34 afterwards. Of a descriptor that is open on the device,
 * the exit status only says whether it reads them. */

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>

#include "check.h"

static const char* path;

static int openedAt(int address) {
  const int bus = open(path, O_RDWR | O_CLOEXEC);
  check(bus >= 0, "open");
  check(fcntl(bus, F_GETFD) == FD_CLOEXEC, "open with O_CLOEXEC");
  check(ioctl(bus, I2C_SLAVE, (long)address) == 0, "I2C_SLAVE");
  return bus;
}

static int transferByte(int bus, uint8_t direction, uint8_t number, uint8_t* value) {
  union i2c_smbus_data data = {.byte = *value};
  struct i2c_smbus_ioctl_data transfer = {direction, number, I2C_SMBUS_BYTE_DATA, &data};
  const int result = ioctl(bus, I2C_SMBUS, &transfer);
  *value = data.byte;
  return result;
}

/* Whether the output registers are 12 34. */
static int isOutput(int bus) {
  uint8_t port0 = 0;
  uint8_t port1 = 0;
  return transferByte(bus, I2C_SMBUS_READ, 2, &port0) == 0 && port0 == 0x12 &&
         transferByte(bus, I2C_SMBUS_READ, 3, &port1) == 0 && port1 == 0x34;
}

static void transferMessages(void) {
  const int bus = open(path, O_RDWR);
  uint8_t output[] = {2, 0x12, 0x34};
  uint8_t bytes[2] = {0, 0};
  struct i2c_msg messages[] = {
      {0x21, 0, 3, output}, {0x21, 0, 1, output}, {0x21, I2C_M_RD, 2, bytes}};
  struct i2c_rdwr_ioctl_data transfer = {messages, 3};
  check(ioctl(bus, I2C_RDWR, &transfer) == 3, "I2C_RDWR");
  check(bytes[0] == 0x12 && bytes[1] == 0x34, "I2C_RDWR's bytes");
  messages[2].addr = 0x20;
  check(syscall(SYS_ioctl, bus, (long)I2C_RDWR, &transfer) == -1 && errno == ENXIO,
        "I2C_RDWR to nobody, by syscall");
  close(bus);
}

static void control(void) {
  const int bus = openat(AT_FDCWD, path, O_RDWR);
  check(fcntl(bus, F_GETFD) == 0, "openat without O_CLOEXEC");
  unsigned long functions = 0;
  check(!isOutput(bus) && errno == ENXIO, "I2C_SMBUS without an address");
  check(ioctl(bus, I2C_FUNCS, &functions) == 0 && (functions & I2C_FUNC_I2C) != 0 &&
            (functions & I2C_FUNC_SMBUS_QUICK) != 0 && (functions & I2C_FUNC_10BIT_ADDR) == 0,
        "I2C_FUNCS");
  check(ioctl(bus, I2C_SLAVE, 0x80L) == -1 && errno == EINVAL, "I2C_SLAVE beyond seven bits");
  check(ioctl(bus, I2C_SLAVE_FORCE, 0x21L) == 0 && isOutput(bus), "I2C_SLAVE_FORCE");
  check(ioctl(bus, I2C_SLAVE, 0x7FL) == 0 && !isOutput(bus) && errno == ENXIO, "I2C_SLAVE");
  check(ioctl(bus, I2C_PEC, 1L) == -1 && errno == EOPNOTSUPP, "I2C_PEC");
  check(ioctl(bus, 0x07FF, 0L) == -1 && errno == ENOTTY, "an unknown request");
  close(bus);
  const int other = open("/dev/null", O_RDWR);
  check(ioctl(other, I2C_SLAVE, 0x21L) == -1 && errno == ENOTTY, "I2C_SLAVE of another device");
  close(other);
}

/* The kernel refuses what the bus does not do. */
static void refuse(void) {
  char byte = 2;
  const int bus = openedAt(0x21);
  check(read(bus, &byte, 1) == -1 && errno == EBADF, "read");
  check(write(bus, &byte, 1) == -1 && errno == EBADF, "write");
  close(bus);
  check(fopen(path, "r+") == NULL && errno == ENXIO, "fopen");
  check(syscall(SYS_openat, AT_FDCWD, path, O_RDWR) == -1 && errno == ENXIO, "openat by syscall");
}

static void shareDescriptors(void) {
  const int bus = openedAt(0x20);
  const int duplicate = dup(bus);
  const int otherOpen = openedAt(0x50);
  check(ioctl(duplicate, I2C_SLAVE, 0x21L) == 0 && isOutput(bus), "a duplicate's address");
  check(!isOutput(otherOpen) && errno == ENXIO, "the address of another open");
  const pid_t child = fork();
  if (child == 0) {
    _exit(isOutput(bus) && ioctl(bus, I2C_SLAVE, 0x50L) == 0 ? 42 : 1);
  }
  int status = 0;
  check(waitpid(child, &status, 0) == child && WEXITSTATUS(status) == 42, "a child");
  check(!isOutput(bus) && errno == ENXIO, "the address that a child has selected");
  close(bus);
  close(duplicate);
  close(otherOpen);
}

/* Counts a register up and checks each time that it is as it was left. */
static void* countUp(void* number) {
  const int bus = openedAt(0x21);
  intptr_t good = 1;
  for (int i = 0; good && i < 2000; ++i) {
    uint8_t value = (uint8_t)i;
    good = transferByte(bus, I2C_SMBUS_WRITE, *(uint8_t*)number, &value) == 0;
    value = (uint8_t)~value;
    good = good && transferByte(bus, I2C_SMBUS_READ, *(uint8_t*)number, &value) == 0 &&
           value == (uint8_t)i;
  }
  close(bus);
  return (void*)good;
}

static int held[2]; /* a pipe that keeps children alive */
static int childCount = 0;

static void forkChild(int number) {
  (void)number;
  if (++childCount <= 100 && fork() == 0) {
    close(held[1]);
    _exit((int)read(held[0], &childCount, 1));
  }
}

/* A process and a thread beside this one, each with one of the registers. Signals interrupt no
 * transfer, and children that are forked during one and live on keep nobody from the bus. */
static void countAtTheSameTime(void) {
  uint8_t numbers[] = {2, 3, 4};
  pthread_t thread;
  const struct sigaction interrupt = {.sa_handler = forkChild};
  const struct itimerval often = {{0, 5000}, {0, 5000}};
  const struct itimerval never = {{0, 0}, {0, 0}};
  check(pipe(held) == 0 && sigaction(SIGALRM, &interrupt, NULL) == 0, "pipe and sigaction");
  const pid_t process = fork();
  if (process == 0) {
    _exit(countUp(&numbers[2]) != NULL ? 42 : 1);
  }
  check(pthread_create(&thread, NULL, countUp, &numbers[1]) == 0, "pthread_create");
  setitimer(ITIMER_REAL, &often, NULL);
  check(countUp(&numbers[0]) != NULL, "counting up");
  setitimer(ITIMER_REAL, &never, NULL);
  void* good = NULL;
  check(pthread_join(thread, &good) == 0 && good != NULL, "a thread that counts up");
  int status = 0;
  check(waitpid(process, &status, 0) == process && WEXITSTATUS(status) == 42,
        "a process that counts up");
  close(held[1]);
  while (wait(NULL) > 0) {
  }
}

int main(int count, char** arguments) {
  if (count == 3) {
    return !isOutput(atoi(arguments[2]));
  }
  path = arguments[1];
  countAtTheSameTime();
  transferMessages();
  control();
  refuse();
  shareDescriptors();
  return failures != 0;
}
