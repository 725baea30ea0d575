# Writes the recorded feed bodies in tests/data: rows in the layout and encoding (GB 18030)
# the Tencent and Sina feeds answer with, and the package's intraday answer. The live feeds
# cannot be reached from the build machines, so the rows are composed here from their documented
# layout; rerunning this script gives the same bytes.
import random

def tencent_cn(code, name, price, prev, opn, vol, high, low, t="20261016150003", market="1"):
    f = [""] * 88
    f[0] = market; f[1] = name; f[2] = code[2:]; f[3] = f"{price:.2f}"; f[4] = f"{prev:.2f}"; f[5] = f"{opn:.2f}"
    f[6] = str(vol); f[7] = str(vol // 2); f[8] = str(vol - vol // 2)
    for i in range(9, 29, 2):
        f[i] = f"{price + (i - 18) * 0.01:.2f}"; f[i + 1] = str(random.randint(1, 300))
    f[29] = ""; f[30] = t; f[31] = f"{price - prev:.2f}"; f[32] = f"{(price - prev) / prev * 100:.2f}"
    f[33] = f"{high:.2f}"; f[34] = f"{low:.2f}"; f[35] = f"{price:.2f}/{vol}/{int(vol * price * 100)}"
    f[36] = str(vol); f[37] = str(int(vol * price / 100)); f[38] = "0.26"; f[39] = "21.42"; f[40] = ""
    f[41] = f"{high:.2f}"; f[42] = f"{low:.2f}"; f[43] = "1.85"; f[44] = "18452.06"; f[45] = "18452.06"
    f[46] = "7.93"; f[47] = f"{prev * 1.1:.2f}"; f[48] = f"{prev * 0.9:.2f}"; f[49] = "1.02"
    for i in range(50, 88): f[i] = "" if i % 7 == 0 else f"{(i * 13) % 97}.{i % 10}"
    f[52] = ""; f[53] = ""
    f[67] = f"{high * 1.2:.2f}"; f[68] = f"{low * 0.85:.2f}"  # the 52-week high and low
    return f'v_{code}="' + "~".join(f) + '";\n'

def tencent_hk(code, name, price, prev, vol, high, low):
    f = [""] * 78
    f[0] = "100"; f[1] = name; f[2] = code[2:]; f[3] = f"{price:.3f}"; f[4] = f"{prev:.3f}"; f[5] = f"{prev:.3f}"
    f[6] = f"{vol}.0"; f[7] = "0"; f[8] = "0"
    for i in range(9, 29): f[i] = f"{price:.3f}" if i % 2 else "0"
    f[30] = "2026/10/16 16:08:15"; f[31] = f"{price - prev:.3f}"; f[32] = f"{(price - prev) / prev * 100:.2f}"
    f[33] = f"{high:.3f}"; f[34] = f"{low:.3f}"; f[35] = f"{price:.3f}"; f[36] = f"{vol}.0"
    f[37] = f"{vol * price:.3f}"; f[46] = name.encode("gbk", "replace").decode("gbk") if False else "TENCENT"
    for i in range(38, 78):
        if not f[i]: f[i] = f"{(i * 7) % 53}.{i % 10}"
    f[75] = "HKD"
    return f'v_{code}="' + "~".join(f) + '";\n'

def tencent_us(code, name, price, prev, vol, high, low, ticker=None):
    f = [""] * 70
    f[0] = "200"; f[1] = name; f[2] = ticker or code[2:] + ".OQ"; f[3] = f"{price:.2f}"; f[4] = f"{prev:.2f}"; f[5] = f"{prev:.2f}"
    f[6] = str(vol); f[7] = "0"; f[8] = "0"
    for i in range(9, 29): f[i] = "0"
    f[30] = "2026-10-16 16:00:01"; f[31] = f"{price - prev:.2f}"; f[32] = f"{(price - prev) / prev * 100:.2f}"
    f[33] = f"{high:.2f}"; f[34] = f"{low:.2f}"; f[35] = "USD"; f[36] = str(vol); f[37] = f"{vol * price:.0f}"
    for i in range(38, 70):
        if not f[i]: f[i] = f"{(i * 11) % 71}.{i % 10}"
    f[46] = "Nvidia Corp" if code == "usNVDA" else "Apple Inc."
    f[38] = "0.69"; f[39] = "52.84"  # turnover and P/E
    f[48] = f"{high * 1.3:.2f}"; f[49] = f"{low * 0.6:.2f}"  # the 52-week high and low
    return f'v_{code}="' + "~".join(f) + '";\n'

random.seed(7)
rows = [
    tencent_cn("sh600519", "贵州茅台", 1468.80, 1452.00, 1455.00, 32165, 1475.00, 1448.10),
    tencent_hk("hk00700", "腾讯控股", 485.2, 478.6, 18273455, 487.4, 476.8),
    tencent_us("usNVDA", "英伟达", 186.25, 182.40, 168420310, 187.90, 181.75),
    tencent_cn("sz000858", "五粮液", 127.05, 128.40, 128.00, 184332, 129.12, 126.55, market="51"),
]
open("tencent-basic.gbk", "wb").write("".join(rows).encode("gb18030"))

# Edge rows: 7 fields, suspended, high below price, "~~" empties, no closing quote at the end.
edge = (
    'v_sh600000="1~浦发银行~600000~10.50~10.40~10.45~88000";\n'
    + 'v_sh601988="1~中国银行~601988~0.00~5.20~0.00~0";\n'
    + tencent_cn("sz300750", "宁德时代", 272.30, 268.50, 270.00, 226514, 270.10, 267.20)
    + 'v_sz000001="1~平安银行~000001~11.61~11.52~~~' + "~" * 26 + '11.66~11.49";\n'
    + 'v_sh688981="1~中芯国际~688981~97.30~96.00~96.50~1000'
)
open("tencent-edge.gbk", "wb").write(edge.encode("gb18030"))

sina = (
    'var hq_str_sh600519="贵州茅台,1455.000,1452.000,1468.800,1475.000,1448.100,1468.790,1468.800,3216500,4720000000.000,'
    + ",".join(["100", "1468.79"] * 10) + ',2026-10-16,15:00:03,00,";\n'
    + 'var hq_str_gb_aapl="苹果,229.9500,-0.71,2026-10-17 04:00:00,-1.6500,231.0000,232.4800,228.7100,260.1000,164.0800,51377620,'
    + '49210044,3415000000000,7.92,29.040000,0.00,0.00,0.99,0.00,0.00,231.6000";\n'
    + 'var hq_str_rt_hkABCDE="TEST HOLDINGS,测试控股,12.300,12.100,12.500,12.000,12.400,0.300,2.48,12.390,12.400,1000000,80000,0.000,0.000,15.000,9.000,2026/10/16,16:08";\n'
    + 'var hq_str_rt_hkWXYZ1="SHORT,短行,9.5,9.1";\n'
    + 'var hq_str_rt_hkWXYZ2="SHORT,短行,9.5,9.1,9.0";\n'
    + 'var hq_str_sz000858="";\n'
    + 'var hq_str_sh601318="中国平安,56.900,56.800,57.420,57.660,56.710,57.410,57.420,61290800,3510000000.000,'
    + ",".join(["200", "57.41"] * 10) + ',2026-10-16,15:00:03,00,";\n'
)
open("sina-basic.gbk", "wb").write(sina.encode("gb18030"))

# Indices beside the stock of the same digits: the feed answers each under the code it was asked
# by; a US index's own code field reads ".IXIC". Indices trade no volume in Hong Kong and the US.
random.seed(11)
indices = [
    tencent_cn("sh000001", "上证指数", 3882.78, 3870.60, 3875.10, 485327116, 3890.12, 3862.45),
    tencent_cn("sz000001", "平安银行", 11.61, 11.52, 11.55, 1038277, 11.66, 11.49, market="51"),
    tencent_hk("hkHSI", "恒生指数", 25930.03, 25828.95, 0, 26012.47, 25790.12),
    tencent_us("usIXIC", "纳斯达克", 22870.35, 22941.67, 0, 23010.50, 22812.40, ticker=".IXIC"),
]
open("tencent-indices.gbk", "wb").write("".join(indices).encode("gb18030"))
sina_index = ('var hq_str_sh000001="上证指数,3875.1000,3870.6000,3882.7800,3890.1200,3862.4500,0,0,'
              '485327116,612345678901,' + ",".join(["0", "0"] * 10) + ',2026-10-16,15:00:03,00,";\n'
              + 'var hq_str_sz000001="平安银行,11.550,11.520,11.610,11.660,11.490,11.600,11.610,103827700,'
              '1205000000.000,' + ",".join(["100", "11.60"] * 10) + ',2026-10-16,15:00:03,00,";\n')
open("sina-indices.gbk", "wb").write(sina_index.encode("gb18030"))

# A body that is neither GB 18030 nor UTF-8: 0xFF starts no character in either.
open("tencent-undecodable.bin", "wb").write(
    b'v_sh600519="1~\xff\xfe' + "茅台".encode("utf-8") + b'~600519~10.00~9.00~9.50~100";\n')

# Tencent's intraday answer, as the package requests it.
import json
minute = {"code": 0, "msg": "", "data": {"sh600519": {"data": {"data": [
    "0930 1455.00 1200 174600000.00", "0931 1456.50 1800 262170000.00",
    "0932 0.00 1800 262170000.00", "0933 1458.20 2400 349968000.00"], "date": "20261016"},
    "qt": {"sh600519": ["1", "贵州茅台", "600519", "1458.20", "1452.00"]}}}}
open("tencent-minute-sh600519.json", "w").write(json.dumps(minute, ensure_ascii=False) + "\n")

# A 500-symbol Tencent answer: A-share rows with Chinese names, as one batch returns them.
random.seed(500)
chars = "中国平安招商银行贵州茅台五粮液宁德时代比亚迪长江电力紫金矿业工商建设农业交通海天味业恒瑞医药格力美的伊利隆基万科保利东方财富中信证券"
rows = []
for i in range(500):
    prefix = "sh60" if i % 2 == 0 else "sz00"
    code = f"{prefix}{1000 + i * 7:04d}"
    name = "".join(random.choice(chars) for _ in range(4))
    prev = round(random.uniform(3, 300), 2)
    price = round(prev * random.uniform(0.95, 1.05), 2)
    rows.append(tencent_cn(code, name, price, prev, prev, random.randint(1000, 9000000),
                           max(price, prev) * 1.01, min(price, prev) * 0.99,
                           market="1" if prefix == "sh60" else "51"))
open("tencent-500.gbk", "wb").write("".join(rows).encode("gb18030"))

# The package's search answer: market~code~name~pinyin~type hits joined by "^", names as \u
# escapes. An index, an off-exchange fund and a convertible bond are among the hits; the bridge
# keeps the exchange-listed stocks and funds only.
hits = [("sh", "600519", "贵州茅台", "gzmt", "GP-A"), ("sh", "000001", "上证指数", "szzs", "ZS"),
        ("hk", "00700", "腾讯控股", "txkg", "GP"), ("us", "nvda.oq", "英伟达", "ywd", "GP"),
        ("jj", "161725", "招商中证白酒", "zszzbj", "KJ"), ("sz", "000858", "五粮液", "wly", "GP-A"),
        ("sh", "113001", "中行转债", "zhzz", "ZQ")]
escaped = lambda s: "".join(c if ord(c) < 128 else "\\u%04x" % ord(c) for c in s)
hint = "^".join("~".join((m, c, escaped(n), p, t)) for m, c, n, p, t in hits)
open("smartbox-search.txt", "w").write('v_hint="' + hint + '"\n')

# Index hits as the search names them: Hong Kong and US codes in lower case, a US one with a dot.
hits = [("sh", "000001", "上证指数", "szzs", "ZS"), ("sz", "000001", "平安银行", "payh", "GP-A"),
        ("hk", "hsi", "恒生指数", "hszs", "ZS"), ("us", ".ixic", "纳斯达克", "nsdk", "ZS")]
hint = "^".join("~".join((m, c, escaped(n), p, t)) for m, c, n, p, t in hits)
open("smartbox-indices.txt", "w").write('v_hint="' + hint + '"\n')
