include $(sort $(wildcard $(BR2_EXTERNAL_FAIRLEAD_PATH)/*/*.mk))
