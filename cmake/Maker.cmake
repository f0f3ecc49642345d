# The maker's addresses. A maker sets the real ones at configure time; the defaults can reach nobody.
set(KESTRELGUARD_WEB_SERVER "www.kestrelguard.example" CACHE STRING "Host name of the maker's web server")
set(KESTRELGUARD_PRODUCT_PAGE "http://www.kestrelguard.example/" CACHE STRING "Address of the product's page")
set(KESTRELGUARD_SUPPORT_EMAIL "support@kestrelguard.example" CACHE STRING "The maker's support e-mail address")
set(KESTRELGUARD_TEST_SERVER "192.168.0.10" CACHE STRING "Private address of the maker's test server")
