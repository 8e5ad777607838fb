include $(sort $(wildcard $(BR2_EXTERNAL_ORB_GNSS_PATH)/package/*/*.mk))
