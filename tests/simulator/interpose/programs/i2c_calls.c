/* Uses an I2C bus with a port expander at 0x21 in every way that i2c-dev offers. Says which call
 * did not do its work on standard error.
 *
 *     i2c_calls DEVICE
 *
 * The expander's output registers are 12 34 afterwards. */

#include <errno.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

/* What fortified headers make of a read whose size is not known at compile time. */
ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t bufferSize);

static const char* path;
static int failures = 0;

static void check(int good, const char* what) {
  if (good) return;
  fprintf(stderr, "%s: %s\n", what, strerror(errno));
  ++failures;
}

static int openedAt(int address) {
  const int bus = open(path, O_RDWR | O_CLOEXEC);
  check(bus >= 0, "open");
  check(ioctl(bus, I2C_SLAVE, (long)address) == 0, "I2C_SLAVE");
  return bus;
}

static int isOutput(int bus, uint8_t port0, uint8_t port1) {
  uint8_t bytes[2] = {0, 0};
  return write(bus, "\2", 1) == 1 && read(bus, bytes, 2) == 2 && bytes[0] == port0 &&
         bytes[1] == port1;
}

static void readAndWrite(void) {
  const int bus = openedAt(0x21);
  uint8_t bytes[2];
  check(write(bus, "\2\x56\x78", 3) == 3, "write");
  check(isOutput(bus, 0x56, 0x78), "read");
  check(__read_chk(bus, bytes, 1, 1) == 1 && bytes[0] == 0x56, "__read_chk");
  check(syscall(SYS_write, bus, "\2\x12\x34", 3L) == 3, "write by syscall");
  check(syscall(SYS_read, bus, bytes, 2L) == 2 && bytes[0] == 0x12, "read by syscall");
  check(isOutput(bus, 0x12, 0x34), "read again");
  close(bus);
}

static void transferMessages(void) {
  const int bus = open(path, O_RDWR);
  uint8_t selected = 2;
  uint8_t bytes[2] = {0, 0};
  struct i2c_msg messages[] = {{0x21, 0, 1, &selected}, {0x21, I2C_M_RD, 2, bytes}};
  struct i2c_rdwr_ioctl_data transfer = {messages, 2};
  check(ioctl(bus, I2C_RDWR, &transfer) == 2, "I2C_RDWR");
  check(bytes[0] == 0x12 && bytes[1] == 0x34, "I2C_RDWR's bytes");
  messages[1].addr = 0x20;
  check(ioctl(bus, I2C_RDWR, &transfer) == -1 && errno == ENXIO, "I2C_RDWR to nobody");
  messages[1].len = 8193;
  check(ioctl(bus, I2C_RDWR, &transfer) == -1 && errno == EINVAL, "I2C_RDWR that is too long");
  check(ioctl(bus, I2C_RDWR, NULL) == -1 && errno == EFAULT, "I2C_RDWR of nothing");
  close(bus);
}

static void transferSmbus(void) {
  const int bus = openedAt(0x21);
  union i2c_smbus_data data;
  struct i2c_smbus_ioctl_data transfer = {I2C_SMBUS_READ, 2, I2C_SMBUS_WORD_DATA, &data};
  check(ioctl(bus, I2C_SMBUS, &transfer) == 0 && data.word == 0x3412, "I2C_SMBUS");
  check(syscall(SYS_ioctl, bus, (long)I2C_SMBUS, &transfer) == 0, "I2C_SMBUS by syscall");
  transfer.size = 99;
  check(ioctl(bus, I2C_SMBUS, &transfer) == -1 && errno == EINVAL, "I2C_SMBUS of no kind");
  close(bus);
}

static void control(void) {
  const int bus = open(path, O_RDWR);
  unsigned long functions = 0;
  check(ioctl(bus, I2C_FUNCS, &functions) == 0 && (functions & I2C_FUNC_I2C) != 0 &&
            (functions & I2C_FUNC_SMBUS_QUICK) != 0 && (functions & I2C_FUNC_10BIT_ADDR) == 0,
        "I2C_FUNCS");
  check(ioctl(bus, I2C_SLAVE, 0x80L) == -1 && errno == EINVAL, "I2C_SLAVE beyond seven bits");
  check(ioctl(bus, I2C_SLAVE_FORCE, 0x21L) == 0 && isOutput(bus, 0x12, 0x34), "I2C_SLAVE_FORCE");
  check(ioctl(bus, I2C_TENBIT, 1L) == 0 && ioctl(bus, I2C_SLAVE, 0x321L) == 0, "I2C_TENBIT");
  check(write(bus, "\2", 1) == -1 && errno == ENXIO, "a write to ten bits");
  check(ioctl(bus, I2C_TENBIT, 0L) == 0, "I2C_TENBIT off");
  check(ioctl(bus, I2C_RETRIES, 3L) == 0 && ioctl(bus, I2C_TIMEOUT, 10L) == 0, "I2C_TIMEOUT");
  check(ioctl(bus, I2C_PEC, 0L) == 0, "I2C_PEC off");
  check(ioctl(bus, I2C_PEC, 1L) == -1 && errno == EOPNOTSUPP, "I2C_PEC");
  check(ioctl(bus, 0x07FF, 0L) == -1 && errno == ENOTTY, "an unknown request");
  close(bus);
}

/* Where no device answers, the address selected or not. */
static void reachNobody(void) {
  uint8_t byte;
  const int bus = open(path, O_RDWR);
  check(read(bus, &byte, 1) == -1 && errno == ENXIO, "read without an address");
  check(write(bus, "\2", 1) == -1 && errno == ENXIO, "write without an address");
  check(ioctl(bus, I2C_SLAVE, 0x50L) == 0, "I2C_SLAVE of nobody");
  check(write(bus, "\2", 1) == -1 && errno == ENXIO, "write to nobody");
  check(read(bus, &byte, 1) == -1 && errno == ENXIO, "read from nobody");
  close(bus);
}

static void shareDescriptors(void) {
  const int bus = openedAt(0x20);
  const int duplicate = dup(bus);
  const int otherOpen = openedAt(0x50);
  check(ioctl(duplicate, I2C_SLAVE, 0x21L) == 0, "I2C_SLAVE of a duplicate");
  check(isOutput(bus, 0x12, 0x34), "the address that a duplicate has selected");
  check(write(otherOpen, "\2", 1) == -1 && errno == ENXIO, "the address of another open");
  const pid_t child = fork();
  if (child == 0) _exit(ioctl(bus, I2C_SLAVE, 0x50L) == 0 && isOutput(bus, 0x12, 0x34) ? 1 : 42);
  int status = 0;
  check(waitpid(child, &status, 0) == child && WEXITSTATUS(status) == 42, "a child");
  check(write(bus, "\2", 1) == -1 && errno == ENXIO, "the address that a child has selected");
  close(bus);
  close(duplicate);
  close(otherOpen);
}

/* Counts a register up and checks each time that it is as it was left. */
static int countUp(uint8_t number) {
  const int bus = openedAt(0x21);
  union i2c_smbus_data data;
  struct i2c_smbus_ioctl_data put = {I2C_SMBUS_WRITE, number, I2C_SMBUS_BYTE_DATA, &data};
  struct i2c_smbus_ioctl_data get = {I2C_SMBUS_READ, number, I2C_SMBUS_BYTE_DATA, &data};
  int good = 1;
  for (int i = 0; good && i < 4000; ++i) {
    const uint8_t value = (uint8_t)i;
    data.byte = value;
    good = ioctl(bus, I2C_SMBUS, &put) == 0;
    data.byte = (uint8_t)~value;
    good = good && ioctl(bus, I2C_SMBUS, &get) == 0 && data.byte == value;
  }
  close(bus);
  return good;
}

/* Two processes, each with one register of a pair: neither disturbs the other. */
static void countInTwoProcesses(void) {
  const pid_t child = fork();
  if (child == 0) _exit(countUp(3) ? 42 : 1);
  check(countUp(2), "a process that counts one port's register up");
  int status = 0;
  check(waitpid(child, &status, 0) == child && WEXITSTATUS(status) == 42,
        "a process that counts the other port's register up");
  const int bus = openedAt(0x21);
  check(write(bus, "\2\x12\x34", 3) == 3, "write after counting");
  close(bus);
}

static int busOfHandler;
static volatile sig_atomic_t handledCount = 0;
static volatile sig_atomic_t goodCount = 0;

static void useInHandler(int number) {
  (void)number;
  ++handledCount;
  goodCount += isOutput(busOfHandler, 0x12, 0x34);
}

/* A handler that waited for the transfer it has interrupted would never return. */
static void useInSignalHandler(void) {
  const struct itimerval often = {{0, 200}, {0, 200}};
  const struct itimerval never = {{0, 0}, {0, 0}};
  busOfHandler = openedAt(0x21);
  signal(SIGALRM, useInHandler);
  setitimer(ITIMER_REAL, &often, NULL);
  while (handledCount < 100) check(write(busOfHandler, "\2", 1) == 1, "write under signals");
  setitimer(ITIMER_REAL, &never, NULL);
  signal(SIGALRM, SIG_DFL);
  close(busOfHandler);
}

static void openInOtherWays(void) {
  int bus = open(path, O_RDONLY);
  check(write(bus, "\2", 1) == -1 && errno == EBADF, "write where only reading was asked for");
  close(bus);
  bus = open(path, O_WRONLY);
  uint8_t byte;
  check(read(bus, &byte, 1) == -1 && errno == EBADF, "read where only writing was asked for");
  close(bus);
  check(open(path, O_RDWR | O_CREAT | O_EXCL, 0600) == -1 && errno == EEXIST, "open of a new file");
  check(open(path, O_RDONLY | O_DIRECTORY) == -1 && errno == ENOTDIR, "open of a folder");
  bus = openat(AT_FDCWD, path, O_RDWR | O_CLOEXEC);
  check(fcntl(bus, F_GETFD) == FD_CLOEXEC, "openat with O_CLOEXEC");
  check(lseek(bus, 0, SEEK_CUR) == -1 && errno == ESPIPE, "lseek");
  close(bus);
  bus = (int)syscall(SYS_openat, AT_FDCWD, path, O_RDWR);
  check(ioctl(bus, I2C_SLAVE, 0x21L) == 0 && isOutput(bus, 0x12, 0x34), "openat by syscall");
  close(bus);
  FILE* const stream = fopen(path, "r+");
  check(stream != NULL && ioctl(fileno(stream), I2C_SLAVE, 0x21L) == 0, "fopen");
  if (stream != NULL) fclose(stream);
  check(freopen(path, "r", stdin) == NULL && errno == EOPNOTSUPP, "freopen");
}

static int isTheDevice(const struct stat* status) {
  return S_ISCHR(status->st_mode) && status->st_rdev == makedev(89, 3) && status->st_size == 0;
}

static void look(void) {
  struct stat status;
  struct statx extended;
  char text[8];
  const int bus = open(path, O_RDWR);
  check(stat(path, &status) == 0 && isTheDevice(&status), "stat");
  check(lstat(path, &status) == 0 && isTheDevice(&status), "lstat");
  check(fstatat(AT_FDCWD, path, &status, 0) == 0 && isTheDevice(&status), "fstatat");
  check(fstat(bus, &status) == 0 && isTheDevice(&status), "fstat");
  check(statx(AT_FDCWD, path, 0, STATX_BASIC_STATS, &extended) == 0 && S_ISCHR(extended.stx_mode) &&
            extended.stx_rdev_major == 89,
        "statx");
  check(access(path, R_OK | W_OK) == 0, "access");
  check(readlink(path, text, sizeof text) == -1 && errno == EINVAL, "readlink");
  close(bus);
}

int main(int count, char** arguments) {
  if (count != 2) return 2;
  path = arguments[1];
  readAndWrite();
  transferMessages();
  transferSmbus();
  control();
  reachNobody();
  shareDescriptors();
  countInTwoProcesses();
  useInSignalHandler();
  check(goodCount == handledCount, "a signal handler");
  openInOtherWays();
  look();
  return failures != 0;
}
