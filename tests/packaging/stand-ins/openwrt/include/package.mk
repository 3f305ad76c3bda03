# Stands in for the file of that name in an OpenWrt tree: "compile" prepares, configures, builds and installs, as the
# recipe says or by default, then makes an image folder for each package and tells what it declared.
$(foreach field,PKG_NAME PKG_VERSION PKG_RELEASE,$(if $($(field)),,$(error the recipe has no $(field))))
PKG_BUILD_DIR := $(BUILD_DIR)/$(PKG_NAME)-$(PKG_VERSION)
PKG_INSTALL_DIR := $(PKG_BUILD_DIR)/ipkg-install

.PHONY: compile
compile:

define Package/Default
SECTION:=
CATEGORY:=
TITLE:=
DEPENDS:=
ABI_VERSION:=
endef

$(PKG_BUILD_DIR)/.built:
	rm -rf $(PKG_BUILD_DIR)
	$(call Build/Prepare)
	$(call Build/Configure)
	$(call Build/Compile)
	$(call Build/Install)
	$(call Build/InstallDev,$(STAGING_DIR))
	touch $@

# declare PACKAGE: what its definition sets, kept under the package's name
define declare
$(eval $(Package/Default))$(eval $(Package/$(1)))
$(foreach field,SECTION CATEGORY TITLE,$(if $(strip $($(field))),,$(error package $(1) has no $(field))))
$(if $(Package/$(1)/description),,$(error package $(1) has no description))
$(if $(Package/$(1)/install),,$(error package $(1) installs nothing))
endef

define BuildPackage
$(call declare,$(1))
compile: image-$(1)
.PHONY: image-$(1)
image-$(1): told := $(1)$(ABI_VERSION) | $(SECTION) | $(CATEGORY) | $(strip $(TITLE)) | $(DEPENDS)
image-$(1): $(PKG_BUILD_DIR)/.built
	rm -rf $(IMAGE_DIR)/$(1)
	mkdir -p $(IMAGE_DIR)/$(1)
	$$(call Package/$(1)/install,$(IMAGE_DIR)/$(1))
	@echo '$$(told)' >$(IMAGE_DIR)/$(1).declared
endef
