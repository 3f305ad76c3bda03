# Stands in for the file of that name in an OpenWrt tree: compiler, folders and commands. STAND_IN_OUTPUT is where all goes.
INCLUDE_DIR := $(TOPDIR)/include
SHELL := /bin/bash -e -o pipefail
ARCH := mipsel
TARGET_CROSS := mipsel-linux-gnu-
TARGET_CFLAGS := -Os -pipe -mno-branch-likely -mips32r2 -mtune=24kc -fno-caller-saves -fno-plt -Wformat \
  -Werror=format-security -fstack-protector -D_FORTIFY_SOURCE=1
TARGET_LDFLAGS := -Wl,-z,now -Wl,-z,relro
BUILD_DIR := $(STAND_IN_OUTPUT)/build_dir
STAGING_DIR := $(STAND_IN_OUTPUT)/staging_dir
IMAGE_DIR := $(STAND_IN_OUTPUT)/image
CP := cp -fpR
INSTALL_DIR := install -d -m0755
INSTALL_BIN := install -m0755
INSTALL_DATA := install -m0644
