package com.tavrin.mmitest.model;

/**
 * One station operation as the factory service records it. The native side reads the fields by
 * name, so their names and types are part of its contract.
 */
public class BigDataOperation {
    public int mVersion;
    public int mCommandId;
    public int mOperation;
    public String mBsn = "";
    public String mStation = "";
    public int mCycle;

    public BigDataOperation() {}

    public BigDataOperation(int version, int commandId, int operation, String bsn, String station, int cycle) {
        mVersion = version;
        mCommandId = commandId;
        mOperation = operation;
        mBsn = bsn;
        mStation = station;
        mCycle = cycle;
    }
}
