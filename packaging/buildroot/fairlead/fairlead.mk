################################################################################
#
# fairlead
#
################################################################################

FAIRLEAD_VERSION = 1.0.0
# The source is the tree this file lies in, so there is nothing to download and no hash.
FAIRLEAD_SITE = $(abspath $(BR2_EXTERNAL_FAIRLEAD_PATH)/../..)
FAIRLEAD_SITE_METHOD = local
FAIRLEAD_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude build --exclude 'build-*'
FAIRLEAD_INSTALL_STAGING = YES
# The programs are named as the folders of their sources are.
FAIRLEAD_SUPPORTS_IN_SOURCE_BUILD = NO
FAIRLEAD_CONF_OPTS = \
	-DCMAKE_SKIP_RPATH=ON \
	-DFAIRLEAD_TESTS=OFF \
	-DFAIRLEAD_EXAMPLES=OFF

$(eval $(cmake-package))
