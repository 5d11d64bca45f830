package com.tavrin.mmitest.model;

/**
 * One measured test item as the factory service records it. The native side reads the fields by
 * name, so their names and types are part of its contract. Texts start empty rather than null: a
 * null text still reaches the service as empty, but costs an error line in the log.
 */
public class BigDataValue {
    public int mVersion;
    public int mDataSource;
    public int mErrorCode;
    public int mItemId;
    public int mCycle;
    public String mDeviceName = "";
    public String mStation = "";
    public String mTestName = "";
    public String mBsn = "";
    public String mValue = "";
    public String mThresholdMin = "";
    public String mThresholdMax = "";
    public String mResult = "";
    public String mTime = "";
    public String mFirmware = "";
    public String mDescription = "";

    public BigDataValue() {}

    /** A measurement of testName on deviceName with its limits and verdict; the rest stays at defaults. */
    public BigDataValue(int itemId, String deviceName, String testName, String value, String thresholdMin,
                        String thresholdMax, String result) {
        mItemId = itemId;
        mDeviceName = deviceName;
        mTestName = testName;
        mValue = value;
        mThresholdMin = thresholdMin;
        mThresholdMax = thresholdMax;
        mResult = result;
    }

    public BigDataValue version(int version) { mVersion = version; return this; }
    public BigDataValue dataSource(int dataSource) { mDataSource = dataSource; return this; }
    public BigDataValue errorCode(int errorCode) { mErrorCode = errorCode; return this; }
    public BigDataValue cycle(int cycle) { mCycle = cycle; return this; }
    public BigDataValue station(String station) { mStation = station; return this; }
    public BigDataValue bsn(String bsn) { mBsn = bsn; return this; }
    public BigDataValue time(String time) { mTime = time; return this; }
    public BigDataValue firmware(String firmware) { mFirmware = firmware; return this; }
    public BigDataValue description(String description) { mDescription = description; return this; }
}
