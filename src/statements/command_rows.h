// Command rows: the vocabulary of the scripts, 472 commands by family and in order of id.
//
// A row is the command word in the case of its manual, the id that picks the conversion rule, and the spec:
// one byte in hexadecimal for each argument position, as the fetcher reads it: a flag or none, and a type
// code. Two rows may share an id; no two share a name, in whatever case. The words of the system commands
// begin with a lower-case letter; their arguments are read and nothing of them is written.
//
// The compiler makes the command table from them and checks this description.
#pragma once

#include <stdint.h>

// Type codes of an argument: the low digit of a spec byte.
enum : uint8_t {
    ARG_STR = 0,    // quoted string, or raw text
    ARG_LONG = 1,   // evaluated, lval
    ARG_INT = 2,    // evaluated, ival
    ARG_FLOAT = 3,  // evaluated, fval
    ARG_DOUBLE = 4, // evaluated, dval
    ARG_NAME = 5,   // raw text: a name or a file variable
    ARG_WORD = 6,   // raw text: a bare word or a label
    ARG_VAR = 7,    // raw text: a variable that the command would store into
    ARG_ITEM = 8,   // print item: quoted string, or raw text with parentheses counted
    ARG_TYPE = 15   // mask of the type code
};

// Flags of a spec byte.
enum : uint8_t {
    ARG_OPTIONAL = 16, // the argument may be left out or empty
    ARG_REPEAT = 32,   // the last position of a row, which takes every further argument too
    ARG_PRINT = 64     // beside ARG_REPEAT: an empty item inside the list is an argument of its own
};

struct command_source_row {
    const char *name;
    int16_t id;
    const char *spec;
};

// clang-format off
inline constexpr command_source_row command_rows[] = {
    // Entity commands: geometry, notes, labels, crosshatch and the view
    // name           id    spec bytes
    {"POINT",          1, "04 04 04 11 11 11 11 11"},
    {"LINE",           2, "04 04 04 04 04 04 11 11 11 11 11 11 11"},
    {"ARC",            3, "04 04 04 04 04 04 11 11 11 11 11 11 11 11"},
    {"CONIC",          4, "04 04 04 04 04 04 04 04 04 04 04 11 11 11 11 11 11 11 11"},
    {"SPLINE",         5, "05 07 01 04 11 11 11 11 11 11 11 11"},
    {"POLYGON",        6, "01 01 01 07 11 11 11 11 11 11"},
    {"POLYLINE",       7, "01 07 04 01 01 11 11 11 11 11 11 11 11"},
    {"NOTE",          15, "04 04 00 14 14 14 11 11 11 11 11 11 11 11 11 14 11 11"},
    {"TEXT",          15, "04 04 00 14 14 14 11 11 11 11 11 11 11 11 11 14 11 11"},
    {"LABEL",         16, "04 04 04 04 04 04 01 04 04 00 14 14 14 11 11 11 11 11 11 11 11 11 11"},
    {"LEADER",        17, "04 04 04 04 04 01 11 11 11 11 11 11 11"},
    {"WITNESS",       18, "04 04 04 04 11 11 11 11 11 11 11"},
    {"XHATCH",        19, "01 01 07 01 11 11 11 11 11 11"},
    {"GENDIM",        20, "01 01 01 01 07 01 04 04 00 14 14 14 11 11 11 11 11 11 11 11 11"},
    {"FNOTE",         22, "04 04 05 14 14 14 11 11 11 11 11 11 11 11 11 14 11 11"},
    {"FTEXT",         22, "04 04 05 14 14 14 11 11 11 11 11 11 11 11 11 14 11 11"},
    {"VIEW",         129, "01 04 04 04 04 04 04 04 04 04 11"},
    {"CIRCLE",       256, "04 04 04 04 11 11 11 11 11 11 11 11"},
    {"VLINE",        257, "04 04 04 04 04 04 11 11 11 11 11 11 11 11"},
    {"VPOINT",       258, "04 04 04 11 11 11 11 11 11"},
    {"SPLINE3",      259, "05 07 01 11 11 11 11 11 11 11 11"},
    {"VPOLYGON",     260, "01 01 01 07 04 11 11 11 11 11 11 11"},
    {"NXHATCH",      261, "01 01 07 01 11 11 11 11 11 11"},

    // Setting commands: they change a state of the system (and a few dimension commands)
    // name           id    spec bytes
    {"SETNOTE",      300, "14 14 14 11 11 11 14 11"},
    {"SETTEXT",      300, "14 14 14 11 11 11 14 11"},
    {"AUTO",         301, "11"},
    {"HALF",         302, "11"},
    {"DBLSCL",       303, "11"},
    {"REDRAW",       304, "11"},
    {"SCALE",        305, "14 14 14 11"},
    {"WINDOW",       306, "04 04 04 04 11"},
    {"LEVELS",       307, "01 01 11"},
    {"MODE",         308, "06"},
    {"CLS",          309, "11"},
    {"SET",          310, "06 15 24"},
    {"GROUP",        311, "00 01 01"},
    {"PALETTE",      312, "01 01 07"},
    {"SETCUR",       313, "04 04 11"},
    {"PRANGE",       314, "01 01 04 04 04 04 04 04"},
    {"DEFATTR",      315, "25"},
    {"SETATTR",      316, "12 33"},
    {"DRAWENT",      317, "12 11 11"},
    {"ANGDIM",       318, "04 04 04 10 04 01 11 11 11 11 11"},
    {"ORDDIM",       319, "04 04 04 10 04 04 01 11 11 11 11 11"},

    // Input, query and file commands
    // name           id    spec bytes
    {"WAIT",         400, "03"},
    {"EXEC",         401, "11 10"},
    {"EXIT",         402, ""},
    {"ABORT",        403, ""},
    {"DELENT",       404, "12"},
    {"GETKEY",       405, "11"},
    {"CODE",         406, "00"},
    {"CLOSE",        407, "05"},
    {"CLEAR",        408, "27"},
    {"GETALL",       409, "07 11"},
    {"GETENT",       410, "00 07 17 17 17 17 17"},
    {"GETENTM",      411, "01 07"},
    {"GETENTXY",     412, "04 04 07 11 17 17 17 17 17 11"},
    {"GETFLT",       413, "00 04 07 10 10 10 10 10 10 10 10 10 11"},
    {"GETINT",       414, "00 02 07 10 10 10 10 10 10 10 10 10 11"},
    {"GETMENU",      415, "00 10 10 10 10 10 10 10 10 10 11 11"},
    {"GETNEXT",      416, "07 11 17 17 17 17 17"},
    {"GETPLANE",     417, "00 01 17"},
    {"GETPOS",       418, "00 01"},
    {"GETSTR",       419, "00 00 07 10 10 10 10 10 10 10 10 10 11"},
    {"GETVIEW",      420, "01 17"},
    {"INPUT",        421, "00 27"},
    {"PAUSE",        422, "10 68"},
    {"PRINT",        423, "00 68"},
    {"PROMPT",       424, "00 68"},
    {"READ",         425, "05 01 27"},
    {"WRITE",        426, "05 01 67"},
    {"CALL",         427, "06 68"},
    {"SPRINT",       428, "07 00 68"},
    {"GETGROUP",     429, "01"},
    {"CLEARSEL",     430, "11"},
    {"GETENV",       431, "05 07"},
    {"GETCOLOR",     432, "00 07 11 11"},
    {"READDEV",      433, "07 07 07 07 17 17 17 11"},
    {"GETCUR",       434, "00 01 01 14 14 14 15 14 10 10 10 10 10 10 10 10 10 11 11"},
    {"GETLWIDTH",    435, "00 07 11"},
    {"GETLTYPE",     436, "00 07 11"},
    {"CLEARHST",     437, "11"},
    {"GETENTID",     438, "02 07 17 17 17 17"},
    {"BREAD",        439, "01 05 07 11"},
    {"BWRITE",       440, "01 05 07 11"},
    {"ADDCOP",       441, "01 01"},
    {"ADDCTYPE",     442, "00 07"},
    {"CMOVE",        443, "05 01"},
    {"CREAD",        444, "05 07 11"},
    {"CWRITE",       445, "05 07 11"},
    {"DELCOP",       446, "12 31"},
    {"DELCTYPE",     447, "00"},
    {"GETCOP",       448, "02 31"},
    {"INQCTYPE",     449, "01 07"},
    {"INQTCODE",     450, "00 07"},
    {"MDEOPEN",      451, "00"},
    {"MDECLOSE",     452, "00"},
    {"SETSTRSZ",     454, "07 01"},

    // Flow commands and the dimension commands of that range
    // name           id    spec bytes
    {"CHAIN",        500, "06"},
    {"DOSUB",        501, "06"},
    {"GOTO",         502, "06"},
    {"IF",           503, "03"},
    {"CIRDIM",       505, "04 04 04 10 04 14 01 11 11 11 11 11"},
    {"LINDIM",       506, "04 04 04 10 04 04 01 11 11 11 11 11"},

    // System commands, the r family: menu operations of the system
    {"rLNENDP", 1001, ""}, {"rLNSTR", 1002, ""}, {"rLNPAPT", 1003, ""}, {"rLNPADS", 1004, ""},
    {"rLNHRZ", 1005, ""}, {"rLNMSH2C", 1006, ""}, {"rLNMSH3C", 1007, ""}, {"rLNMSH4C", 1008, ""},
    {"rLNMSHCYL", 1009, ""}, {"rLNMSHREV", 1010, ""}, {"rLNMSHRUL", 1011, ""}, {"rLNMSHSPH", 1012, ""},
    {"rLNVRT", 1013, ""}, {"rLNBTH", 1014, ""}, {"rLNTNPT", 1015, ""}, {"rLNPRPT", 1016, ""},
    {"rLNTNTN", 1017, ""}, {"rLNTNPR", 1018, ""}, {"rLNPRTN", 1019, ""}, {"rLNPRPR", 1020, ""},
    {"rLN_ANG", 1021, ""}, {"rLNPOLY", 1022, ""}, {"rARC_2TN", 1030, ""}, {"rARC_3PT", 1031, ""},
    {"rARC_3TN", 1032, ""}, {"rARC_CD", 1033, ""}, {"rARC_CE", 1034, ""}, {"rARC_CR", 1035, ""},
    {"rARC_CTN", 1036, ""}, {"rARC_INCL", 1037, ""}, {"rARC_R2PT", 1038, ""}, {"rARC_TANG", 1039, ""},
    {"rCIR_2TN", 1040, ""}, {"rCIR_3PT", 1041, ""}, {"rCIR_3TN", 1042, ""}, {"rCIR_CD", 1043, ""},
    {"rCIR_CE", 1044, ""}, {"rCIR_CR", 1045, ""}, {"rCIR_CTN", 1046, ""}, {"rCIR_ED", 1047, ""},
    {"rPTPT", 1050, ""}, {"rPTNOD", 1051, ""}, {"rPTCNUM", 1052, ""}, {"rPTCLDS", 1053, ""},
    {"rPTCDS", 1054, ""}, {"rPTARCANG", 1055, ""}, {"rPTMSH2C", 1056, ""}, {"rPTMSH3C", 1057, ""},
    {"rPTMSH4C", 1058, ""}, {"rPTMSHCYL", 1059, ""}, {"rPTMSHREV", 1060, ""}, {"rPTMSHRUL", 1061, ""},
    {"rPTMSHSPH", 1062, ""}, {"rPLPT", 1070, ""}, {"rPLSIDE", 1071, ""}, {"rPLSKETCH", 1072, ""},
    {"rPLMSH2C", 1073, ""}, {"rPLMSH3C", 1074, ""}, {"rPLMSH4C", 1075, ""}, {"rPLMSHCYL", 1076, ""},
    {"rPLMSHREV", 1077, ""}, {"rPLMSHRUL", 1078, ""}, {"rPLMSHSPH", 1079, ""}, {"rFITRIM", 1080, ""},
    {"rFINOTRIM", 1081, ""}, {"rFICHAMF", 1082, ""}, {"rCN2PT", 1090, ""}, {"rCN3PT", 1091, ""},
    {"rCN4PT", 1092, ""}, {"rCN5PT", 1093, ""}, {"rCN6COF", 1094, ""}, {"rPB2PT", 1100, ""},
    {"rPBLN", 1101, ""}, {"rPBEND", 1102, ""}, {"rELLIPSE", 1110, ""}, {"rPGCR", 1120, ""},
    {"rPGCS", 1121, ""}, {"rPGSTRING", 1122, ""}, {"rPGMSH2C", 1123, ""}, {"rPGMSH3C", 1124, ""},
    {"rPGMSH4C", 1125, ""}, {"rPGMSHCYL", 1126, ""}, {"rPGMSHREV", 1127, ""}, {"rPGMSHRUL", 1128, ""},
    {"rPGMSHRVS", 1129, ""}, {"rPGMSHSPH", 1130, ""}, {"rSP2D", 1140, ""}, {"rSP2DC", 1141, ""},
    {"rSPHLX", 1142, ""}, {"rSP2DPTS", 1143, ""}, {"rSP3DPTS", 1144, ""}, {"rSP3D", 1145, ""},
    {"rSP3DC", 1146, ""}, {"rSPMSH2C", 1147, ""}, {"rSPMSH3C", 1148, ""}, {"rSPMSH4C", 1149, ""},
    {"rSPMSHCYL", 1150, ""}, {"rSPMSHREV", 1151, ""}, {"rSPMSHSPH", 1152, ""}, {"rMS2CURVE", 1160, ""},
    {"rMS4CURVE", 1161, ""}, {"rMSREV", 1162, ""}, {"rMSSPHERE", 1163, ""}, {"rMSRULED", 1164, ""},
    {"rMS3CURVE", 1165, ""}, {"rMSTABCYL", 1166, ""}, {"rRCLN", 1170, ""}, {"rRCPL", 1171, ""},
    {"rRCPG", 1172, ""}, {"rASENTS", 1180, ""}, {"rASLINES", 1181, ""}, {"rTRM1", 1200, ""},
    {"rTRM2", 1201, ""}, {"rTRMEND", 1202, ""}, {"rTRMMID", 1203, ""}, {"rTRMMULT", 1204, ""},
    {"rTRMPOS", 1205, ""}, {"rBRK1", 1206, ""}, {"rBRK2", 1207, ""}, {"rBRKEND", 1208, ""},
    {"rBRKMID", 1209, ""}, {"rBRKMULT", 1210, ""}, {"rBRKPOS", 1211, ""}, {"rSPEDIT", 1212, ""},
    {"rSCTTRM", 1213, ""}, {"rSCTBRK", 1214, ""}, {"rSCTPNT", 1215, ""}, {"rSCTDEL", 1216, ""},
    {"rSCTCHG", 1217, ""}, {"rPGREV", 1218, ""}, {"rDTLNHRZ", 1250, ""}, {"rDTLNHRZB", 1251, ""},
    {"rDTLNHRZC", 1252, ""}, {"rDTLNHRZR", 1253, ""}, {"rDTLNPAR", 1254, ""}, {"rDTLNPARB", 1255, ""},
    {"rDTLNPARC", 1256, ""}, {"rDTLNPARR", 1257, ""}, {"rDTLNVRT", 1258, ""}, {"rDTLNVRTB", 1259, ""},
    {"rDTLNVRTC", 1260, ""}, {"rDTLNVRTR", 1261, ""}, {"rDTRD2PTS", 1270, ""}, {"rDTRDBENT", 1271, ""},
    {"rDTRDEDGE", 1272, ""}, {"rDTRDREG", 1273, ""}, {"rDTDI2PTS", 1280, ""}, {"rDTDIEDGE", 1281, ""},
    {"rDTDIREG", 1282, ""}, {"rDTANG2LN", 1290, ""}, {"rDTANG3PT", 1291, ""}, {"rDTORDADD", 1300, ""},
    {"rDTORDAH", 1301, ""}, {"rDTORDALN", 1302, ""}, {"rDTORDAP", 1303, ""}, {"rDTORDAV", 1304, ""},
    {"rDTORDMOV", 1305, ""}, {"rDTORDNAH", 1306, ""}, {"rDTORDNAP", 1307, ""}, {"rDTORDNAV", 1308, ""},
    {"rDTORDREM", 1309, ""}, {"rDTCHAMFC", 1320, ""}, {"rDTCHAMFX", 1321, ""}, {"rDTNTDISK", 1330, ""},
    {"rDTNTDUMP", 1331, ""}, {"rDTNTFILE", 1332, ""}, {"rDTNTKEY", 1333, ""}, {"rDTLABEL", 1340, ""},
    {"rDTARR1", 1350, ""}, {"rDTWIT1", 1360, ""}, {"rDTXH", 1370, ""}, {"rDTXHADD", 1371, ""},
    {"rDTXHSUB", 1372, ""}, {"rDTCHANGE", 1380, ""}, {"rDTUPDATE", 1390, ""}, {"rDTSET", 1400, ""},
    {"rXFDELTAM", 1450, ""}, {"rXFDELTAC", 1451, ""}, {"rXFDELTAJ", 1452, ""}, {"rXFOLDNWM", 1455, ""},
    {"rXFOLDNWC", 1456, ""}, {"rXFOLDNWJ", 1457, ""}, {"rXFROTM", 1460, ""}, {"rXFROTC", 1461, ""},
    {"rXFROTJ", 1462, ""}, {"rXFSCALLM", 1465, ""}, {"rXFSCALLC", 1466, ""}, {"rXFSCALLJ", 1467, ""},
    {"rXFSCVECM", 1470, ""}, {"rXFSCVECC", 1471, ""}, {"rXFSCVECJ", 1472, ""}, {"rXFSCAXM", 1475, ""},
    {"rXFSCAXC", 1476, ""}, {"rXFSCAXJ", 1477, ""}, {"rXFMIRM", 1480, ""}, {"rXFMIRC", 1481, ""},
    {"rXFMIRJ", 1482, ""}, {"rXFNPROJM", 1485, ""}, {"rXFNPROJC", 1486, ""}, {"rXFNPROJJ", 1487, ""},
    {"rXFSPROJM", 1490, ""}, {"rXFSPROJC", 1491, ""}, {"rXFSPROJJ", 1492, ""}, {"rXFHLXM", 1495, ""},
    {"rXFHLXC", 1496, ""}, {"rXFHLXJ", 1497, ""}, {"rXFCARRM", 1500, ""}, {"rXFCARRC", 1501, ""},
    {"rXFCARRJ", 1502, ""}, {"rXFBOXMVP", 1505, ""}, {"rXFBOXMVR", 1506, ""}, {"rXFOFFSET", 1510, ""},
    {"rXFSET", 1515, ""}, {"rMODSET", 1516, ""}, {"rLAYOUT", 1520, ""}, {"rFILENEW", 1550, ""},
    {"rFILEOPEN", 1551, ""}, {"rFILEDESC", 1552, ""}, {"rIMPPTN", 1553, ""}, {"rIMPIGES", 1554, ""},
    {"rIMPDXF", 1555, ""}, {"rIMPDWG", 1556, ""}, {"rEXPPTN", 1557, ""}, {"rEXPMURL", 1558, ""},
    {"rEXPIGES", 1559, ""}, {"rEXPDXF", 1560, ""}, {"rEXPDWG", 1561, ""}, {"rEXPUNIPL", 1562, ""},
    {"rEXPWMF", 1563, ""}, {"rFILEPRN", 1565, ""}, {"rEDDELENT", 1570, ""}, {"rVWLEVDSC", 1580, ""},
    {"rVWLEVLST", 1581, ""}, {"rVWLEVMOV", 1582, ""}, {"rMDELOAD", 1590, ""}, {"rMDECLOSE", 1591, ""},
    {"rMDEEXE", 1592, ""}, {"rMURLEXE", 1593, ""}, {"rFMPLYOUT", 1600, ""}, {"rFMPLYFIL", 1601, ""},
    {"rGRPMAKE", 1610, ""}, {"rGRPADDTO", 1611, ""}, {"rGRPDEGRP", 1612, ""}, {"rGRPDEL", 1613, ""},
    {"rVERATT", 1614, ""}, {"rVERCOORD", 1615, ""}, {"rVERDISPP", 1616, ""}, {"rVERDISPE", 1617, ""},
    {"rVERDISEE", 1618, ""}, {"rVERANG", 1619, ""}, {"rVERPERIM", 1620, ""}, {"rVERARCEN", 1621, ""},
    {"rVERMOM", 1622, ""}, {"rVERCONIC", 1623, ""}, {"rVERPOS", 1624, ""}, {"rVPCASC", 1630, ""},
    {"rVPTILEH", 1631, ""}, {"rVPTILEV", 1632, ""}, {"rVPDELALL", 1633, ""}, {"rVPADD", 1634, ""},
    {"rVPDEL", 1635, ""}, {"rVPASET", 1636, ""},

    // System commands, the i family: immediate commands of the system
    {"iDELSNG", 1701, ""}, {"iREDRAW", 1702, ""}, {"iPAN", 1703, ""}, {"iAUTO", 1704, ""},
    {"iHALF", 1705, ""}, {"iDOUBLE", 1706, ""}, {"iCTRSC", 1707, ""}, {"iMINMAX", 1708, ""},
    {"iBACK1", 1709, ""}, {"iDVAXES", 1710, ""}, {"iCVAXES", 1711, ""}, {"iCURTRK", 1712, ""},
    {"iREGEN", 1713, ""}, {"iDELLEV", 1714, ""}, {"iLEVSET", 1715, ""}, {"iLEVON", 1716, ""},
    {"iLEVOFF", 1717, ""}, {"iLEVMASK", 1718, ""}, {"iSET2D3D", 1719, ""}, {"iSETZ", 1720, ""},
    {"iSETLL", 1721, ""}, {"iSETWV", 1722, ""}, {"iSETDH", 1723, ""}, {"iSETNH", 1724, ""},
    {"iSETNA", 1725, ""}, {"iSETCA", 1726, ""}, {"iSETDF", 1727, ""}, {"iSETNF", 1728, ""},
    {"iSETDBSW", 1729, ""}, {"iTOGDBSW", 1730, ""}, {"iDSPISO", 1731, ""}, {"iTOGARR", 1732, ""},
    {"iSLIDE", 1733, ""}, {"iUNDOALL", 1734, ""}, {"iUNDOLAST", 1735, ""}, {"iUNDOLEV", 1736, ""},
    {"iSETVIEW", 1737, ""}, {"iSETCPLAN", 1738, ""}, {"iSETGRDSN", 1739, ""}, {"iSETATTR", 1740, ""},
    {"iCHNGATTR", 1741, ""}, {"iSETMASK", 1742, ""}, {"iSETCOL", 1743, ""}, {"iSETLSTY", 1744, ""},
    {"iSETLWID", 1745, ""}, {"iTOGWV", 1746, ""}, {"iTOG2D3D", 1747, ""}, {"iROTPART", 1748, ""},
    {"iCALC", 1749, ""}, {"iFILESAVE", 1750, ""}, {"iFILESAVA", 1751, ""}, {"iEDCLIPR", 1752, ""},
    {"iEDCLIPV", 1753, ""}, {"iFMFONT", 1754, ""}, {"iEDITUNDO", 1755, ""},

    // System commands, the e family: an answer to a prompt of the system
    // name           id    spec bytes
    {"eCUR",        1801, "01 01 04 04 04"},
    {"ePICK",       1802, "01 01 04 04 04"},
    {"ePOS",        1803, "01 01 01 04 04 04"},
    {"eDBL1",       1810, "01 04"},
    {"eDBL2",       1811, "01 04 04 04"},
    {"eDBL3",       1812, "01 04 04 04"},
    {"eDATADISP",   1813, "01"},
    {"eINT1",       1814, "01 01"},
    {"eLONG1",      1815, "01 02"},
    {"eMENU",       1816, "01 01"},
    {"eSTR",        1817, "01 00"},

    // System commands, the d family: an answer to a dialog of the system
    // name           id    spec bytes
    {"dMDECLOSE",   1828, "01 00"},
    {"dMDEEXE",     1829, "01 00"},
    {"dCHAFFIX",    1830, "01 00 00"},
    {"dCHATT",      1831, "01 01 01 01 01"},
    {"dCHTOL",      1832, "01 04 01 01 01 01 01 04 01 04 01 01 01 01 01 01 01 04 01 04 01 01 01"},
    {"dCHTXT",      1833, "01 04 01 01 01 01 01 01 01 04 01 04 01 04 01 04 01 01 01 01 01 01 01 01 01 01 01"},
    {"dCOLOR256",   1834, "01"},
    {"dCOLOR",      1835, "01"},
    {"dDATA",       1836, "01"},
    {"dDTSET",      1837, "01 04 04 01 04 01 04 01 01 01 01 01 04 01 01 01 01 01 01 01 01 01 04 01 01 01 "
                          "01 01 01 01 01 04 01 04 01 04 01 01 01 04 01 04 04 01 01 01 04 04 01 01"},
    {"dFILE",       1838, "01 00 00 00"},
    {"dFILEDESC",   1839, "01 00"},
    {"dFONT",       1840, "01"},
    {"dGRID",       1841, "01 04 04 04 04 01 04 04 04 04 01"},
    {"dHLXUI",      1842, "01 01 01 04 04 04"},
    {"dLAYCNFRM",   1843, "01"},
    {"dLAYMDLG",    1844, "01 02 00"},
    {"dLAYNEW",     1845, "01 00 00 01 04 01 04 04 04 04 01"},
    {"dLEVLIST",    1846, "01"},
    {"dLSTYLE",     1847, "01"},
    {"dLWIDTH",     1848, "01"},
    {"dMASK",       1849, "01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 "
                          "01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01"},
    {"dPRINT",      1850, "01 01 01 01 01 01 01 01 04 04 04 04 04 04 04 04 04 04 04 04"},
    {"dROTAXES",    1851, "01 04 04 04 04 04 04 04 04 04"},
    {"dSELVIEW",    1852, "01"},
    {"dTEXTEDIT",   1853, "01 00 04"},
    {"dVPORTSET",   1854, "01"},
    {"dWMFPARAM",   1855, "01 01 01 01 01 01 04 04"},
    {"dXFSET",      1856, "01 01 01 01 01 01 01"},
    {"dXHATCH",     1857, "01 01 04 01 04"},
    {"dYESNO",      1858, "01 01"},
    {"dSYSPRINT",   1859, "01 01"},
    {"dMODSET",     1860, "01 01 01 01"},

    // System commands, the u family: utilities
    // name           id    spec bytes
    {"uPAUSE",      1901, "01"},
    {"uMACSTART",   1902, ""},
    {"uMACEND",     1903, ""},
    {"uIMMROOT",    1904, ""},
    {"uCALC",       1905, "00"},
    {"uNEWFONT",    1906, "01 01 00 00"},
    {"uDELFONT",    1907, "01"},
};
// clang-format on

constexpr int command_count = sizeof command_rows / sizeof command_rows[0];
static_assert(command_count == 472);

constexpr int spec_digit(char c)
{
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// Spec positions of a spec text, or -1 if it isn't made of pairs of digits with one blank between them.
constexpr int spec_length(const char *spec)
{
    if (*spec == 0)
        return 0;
    int count = 0;
    for (;; spec += 3) {
        if (spec_digit(spec[0]) < 0 || spec_digit(spec[1]) < 0)
            return -1;
        count++;
        if (spec[2] == 0)
            return count;
        if (spec[2] != ' ')
            return -1;
    }
}

// The byte of a spec text's position, which counts from 0.
constexpr uint8_t spec_byte(const char *spec, int position)
{
    return static_cast<uint8_t>(spec_digit(spec[3 * position]) * 16 + spec_digit(spec[3 * position + 1]));
}

// Spec positions of the commands of an id, or -1 if no command has it.
constexpr int command_spec_count(int id)
{
    for (const command_source_row &row : command_rows)
        if (row.id == id)
            return spec_length(row.spec);
    return -1;
}

// Whether the last position of the commands of an id takes every further argument too.
constexpr bool command_repeats(int id)
{
    for (const command_source_row &row : command_rows)
        if (int count = row.id == id ? spec_length(row.spec) : 0; count > 0)
            return (spec_byte(row.spec, count - 1) & ARG_REPEAT) != 0;
    return false;
}
